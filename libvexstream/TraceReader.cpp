#include "libvexstream/TraceReader.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <utility>

#include "libvexstream/internal/Division.h"
#include "libvexstream/internal/TraceWindow.h"
#include "libvexstream/internal/soundness.h"
#include "libvextrace/MessageFactory.h"

namespace vextrace {

namespace {

// Of long damage so much is kept; all of a torn message is.
constexpr size_t DAMAGE_FRONT = LONGEST_MESSAGE;

// So many bytes are judged between two questions whether to stop.
constexpr size_t AT_ONCE = size_t{16} * 1024;

constexpr const char* NOTHING_FOLLOWS = "no message follows where its size field says";

uint64_t startOf(const TraceRange& range) {
    return range.begin - std::min(range.begin, range.lead);
}

}  // namespace

struct TraceReader::State {
    State(ByteSource& source, const TraceRange& range)
        : input(source),
          wanted(range),
          position(startOf(range)),
          window(source, position),
          division(window) {}

    TraceItem next();
    bool passOver(std::span<const uint8_t> message);
    TraceItem nextOfAny();
    bool begin();
    void skip();
    TraceItem inSequence();
    TraceItem takeGps(size_t length);
    TraceItem take(TraceItem::Kind kind, size_t length);
    void goOnBehind(size_t length);
    TraceItem incomplete(size_t length);
    bool isCutOff();
    TraceItem beginDamage(std::string reason);
    TraceItem skipDamage();
    TraceItem endDamage();
    TraceItem theEnd();
    void passOver(uint64_t until);

    ByteSource& input;
    const TraceRange wanted;
    uint64_t position;
    TraceWindow window;
    Division division;
    // Bytes that are there of a message that is not all there.
    struct Growth {
        uint64_t seen = 0;   // when it was looked at last
        uint64_t asked = 0;  // when it was asked whether it is cut off
    };

    GpsView gps;  // of the item given out last
    Growth growth;
    uint64_t skipped = 0;  // of what is in front of the place where reading begins
    std::exception_ptr skipError;
    bool begun = false;
    bool found = false;
    bool growing = false;
    std::function<bool()> stop = [] { return false; };
    std::optional<std::string> damage;  // why it is none, while looking for the next message
    uint64_t cursor = 0;                // what lies before it is damage
    std::vector<uint8_t> front;         // of the damage
};

TraceReader::TraceReader(ByteSource& source) : TraceReader(source, TraceRange()) {}

TraceReader::TraceReader(ByteSource& source, const TraceRange& range)
    : state(std::make_unique<State>(source, range)) {
    GPSTraceMessage::registerMessage();
}

TraceReader::~TraceReader() = default;

TraceItem TraceReader::next() {
    return state->next();
}

bool TraceReader::passOver(std::span<const uint8_t> message) {
    return state->passOver(message);
}

bool TraceReader::foundMessage() const {
    return state->found;
}

uint64_t TraceReader::position() const {
    return state->position;
}

void TraceReader::setGrowing(bool growing) {
    state->growing = growing;
    state->division.setGrowing(growing);
}

void TraceReader::setStop(std::function<bool()> stop) {
    state->stop = std::move(stop);
}

// What is found first behind a start in the midst of a trace is no item of it.
TraceItem TraceReader::State::next() {
    const uint64_t start = startOf(wanted);
    while (begin() && position < wanted.end) {
        TraceItem item = nextOfAny();
        if (item.kind == TraceItem::Kind::DAMAGE && item.length == 0) {
            continue;  // reading began where a message begins
        }
        item.isBefore = item.offset < wanted.begin;
        const bool isWanted = wanted.givesBefore && (item.offset > start || start == 0);
        if (item.kind == TraceItem::Kind::END || !item.isBefore || isWanted) {
            return item;
        }
    }
    TraceItem item;
    item.offset = position;
    return item;
}

bool TraceReader::State::passOver(std::span<const uint8_t> message) {
    const bool mayBeNext = begin() && !damage && position >= wanted.begin && position < wanted.end;
    if (!mayBeNext || message.empty()) {
        return false;
    }
    window.keepFrom(position);
    window.readOn();
    window.setReading(true);
    if (window.available(position, message.size()) < message.size() ||
        !std::equal(message.begin(), message.end(), window.at(position))) {
        return false;
    }
    goOnBehind(message.size());
    return true;
}

// Whether the trace reaches the place where reading begins; a growing one may later.
bool TraceReader::State::begin() {
    if (skipped < position && !begun) {
        skip();
        if (skipped < position) {
            return false;
        }
        cursor = position;
        damage.emplace();
    }
    begun = true;
    return true;
}

// Where that failed nobody knows at which offset the source is.
void TraceReader::State::skip() {
    if (skipError) {
        std::rethrow_exception(skipError);
    }
    try {
        skipped += input.skip(position - skipped);
    } catch (...) {
        skipError = std::current_exception();
        throw;
    }
}

TraceItem TraceReader::State::nextOfAny() {
    window.keepFrom(damage ? cursor : position);
    window.readOn();
    return damage ? skipDamage() : inSequence();
}

TraceItem TraceReader::State::inSequence() {
    window.setReading(true);
    const size_t there = window.available(position, MessageBase::MO_BASE_DERIVED);
    if (there == 0) {
        return theEnd();
    }
    const FramedMessage framed = MessageFactory::frame(window.at(position), there);
    if (framed.framing == FRAMING_DAMAGED) {
        const size_t size = messageLength(window.at(position)) - MessageBase::MSGSIZE_LENGTH;
        return beginDamage("size field " + std::to_string(size) + " is too small for a header");
    }
    const bool complete = window.available(position, framed.length) == framed.length;
    // Where the trace grows, nothing that is complete waits for what comes behind it.
    window.setReading(!growing);
    if (!complete) {
        return incomplete(framed.length);
    }
    if (messageId(window.at(position)) == MSGID_GPS) {
        return takeGps(framed.length);
    }
    return division.keeps(position, framed.length) ? take(TraceItem::Kind::OTHER, framed.length)
                                                   : beginDamage(NOTHING_FOLLOWS);
}

// The message runs beyond the end of the trace, or beyond what could be read of it.
TraceItem TraceReader::State::incomplete(size_t length) {
    if ((growing || window.hasReadError()) && (division.mayHold(position) || !isCutOff())) {
        return theEnd();
    }
    return beginDamage("a message of " + std::to_string(length) + " bytes is cut off after " +
                       std::to_string(window.end() - position));
}

// Whether another message begins within one that is not all there yet. While more and more comes it
// is asked now and then, so that bytes that come one by one are not all looked at for each of them.
bool TraceReader::State::isCutOff() {
    const uint64_t there = window.end() - position;
    const bool rests = std::exchange(growth.seen, there) == there;
    if (!rests && there >= growth.asked && there < growth.asked + growth.asked / 64) {
        return false;
    }
    growth.asked = there;
    return division.anyBegins(position + 1, window.end());
}

TraceItem TraceReader::State::takeGps(size_t length) {
    if (gps.readInPlace({window.at(position), length}) &&
        division.keepsCanonical(position, length)) {
        return take(TraceItem::Kind::GPS, length);
    }
    const bool isKept = division.keeps(position, length);
    const std::span<const uint8_t> message(window.at(position), length);
    if (!isKept && holdsNul(message.subspan(MessageBase::MO_BASE_DERIVED))) {
        return beginDamage("the GPS message holds a NUL byte");
    }
    if (const auto error = gps.read(message)) {
        return beginDamage(error->what());
    }
    if (!isKept) {
        return beginDamage(NOTHING_FOLLOWS);
    }
    return take(TraceItem::Kind::GPS, length);
}

TraceItem TraceReader::State::take(TraceItem::Kind kind, size_t length) {
    TraceItem item;
    item.kind = kind;
    item.offset = position;
    item.bytes = {window.at(position), length};
    item.length = length;
    item.id = messageId(item.bytes.data());
    item.gps = kind == TraceItem::Kind::GPS ? &gps : nullptr;
    goOnBehind(length);
    return item;
}

// A message of this length was taken.
void TraceReader::State::goOnBehind(size_t length) {
    division.setBefore(position);
    position += length;
    growth = {};
    found = true;
}

TraceItem TraceReader::State::beginDamage(std::string reason) {
    damage = std::move(reason);
    front.clear();
    cursor = position;
    passOver(position + 1);
    return skipDamage();
}

TraceItem TraceReader::State::skipDamage() {
    window.setReading(true);
    while (window.available(cursor, 1) != 0) {
        const Division::Place place = division.findBeginning(cursor, cursor + AT_ONCE);
        passOver(place.offset);
        if (place.soundness == Soundness::SOUND) {
            return endDamage();
        }
        if (place.soundness == Soundness::UNDECIDED || stop()) {
            return theEnd();
        }
    }
    return growing ? theEnd() : endDamage();
}

void TraceReader::State::passOver(uint64_t until) {
    const size_t room = DAMAGE_FRONT - front.size();
    const auto count = static_cast<size_t>(std::min<uint64_t>(until - cursor, room));
    front.resize(front.size() + count);
    std::copy_n(window.at(cursor), count, front.end() - static_cast<std::ptrdiff_t>(count));
    cursor = until;
    window.keepFrom(cursor);
}

TraceItem TraceReader::State::endDamage() {
    const bool reachesEnd = window.available(cursor, 1) == 0;
    if (reachesEnd) {
        window.throwReadError();
    }
    TraceItem item;
    item.reachesEnd = reachesEnd;
    item.kind = TraceItem::Kind::DAMAGE;
    item.offset = position;
    item.bytes = front;
    item.length = cursor - position;
    item.reason = std::move(*damage);
    damage.reset();
    position = cursor;
    growth = {};
    return item;
}

TraceItem TraceReader::State::theEnd() {
    window.throwReadError();
    if (growing) {
        window.forgetFrom(damage ? cursor : position);
        division.forget();
    }
    TraceItem item;
    item.offset = position;
    return item;
}

}  // namespace vextrace
