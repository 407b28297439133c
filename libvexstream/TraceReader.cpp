#include "libvexstream/TraceReader.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "libvexstream/internal/Resync.h"
#include "libvexstream/internal/TraceWindow.h"
#include "libvexstream/internal/soundness.h"
#include "libvextrace/MessageFactory.h"

namespace vextrace {

namespace {

// Of long damage so much is kept; all of a torn message is.
constexpr size_t DAMAGE_FRONT = LONGEST_MESSAGE;

constexpr const char* NOTHING_FOLLOWS = "no message follows where its size field says";

}  // namespace

struct TraceReader::State {
    explicit State(ByteSource& source) : window(source), resync(window) {}

    TraceItem next();
    TraceItem inSequence();
    TraceItem takeGps(size_t length);
    TraceItem takeOther(size_t length);
    TraceItem take(TraceItem::Kind kind, size_t length);
    TraceItem incomplete(size_t length);
    TraceItem beginDamage(std::string reason);
    TraceItem skipDamage();
    TraceItem endDamage();
    TraceItem theEnd();
    bool endsOrGoesOn(uint64_t offset);
    bool isSoundAlone(std::span<const uint8_t> message);
    void passOver(uint64_t until);

    TraceWindow window;
    Resync resync;
    GpsView gps;  // of the item given out last
    uint64_t position = 0;
    bool found = false;
    bool growing = false;
    std::optional<std::string> damage;  // why it is none, while looking for the next message
    uint64_t cursor = 0;                // what lies before it is damage
    std::vector<uint8_t> front;         // of the damage
};

TraceReader::TraceReader(ByteSource& source) : state(std::make_unique<State>(source)) {
    GPSTraceMessage::registerMessage();
}

TraceReader::~TraceReader() = default;

TraceItem TraceReader::next() {
    return state->next();
}

bool TraceReader::foundMessage() const {
    return state->found;
}

uint64_t TraceReader::position() const {
    return state->position;
}

void TraceReader::setGrowing(bool growing) {
    state->growing = growing;
    state->resync.setGrowing(growing);
}

TraceItem TraceReader::State::next() {
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
    return messageId(window.at(position)) == MSGID_GPS ? takeGps(framed.length)
                                                       : takeOther(framed.length);
}

// The message runs beyond the end of the trace.
TraceItem TraceReader::State::incomplete(size_t length) {
    window.throwReadError();
    if (growing && !resync.soundBegins(position + 1, window.end())) {
        return theEnd();
    }
    return beginDamage("a message of " + std::to_string(length) + " bytes is cut off after " +
                       std::to_string(window.end() - position));
}

TraceItem TraceReader::State::takeGps(size_t length) {
    const bool goesOn = endsOrGoesOn(position + length);
    const std::span<const uint8_t> message(window.at(position), length);
    if (holdsNul(message.subspan(MessageBase::MO_BASE_DERIVED))) {
        return beginDamage("the GPS message holds a NUL byte");
    }
    if (const auto error = gps.read(message)) {
        return beginDamage(error->what());
    }
    if (!goesOn && !isSoundAlone(message)) {
        return beginDamage(NOTHING_FOLLOWS);
    }
    TraceItem item = take(TraceItem::Kind::GPS, length);
    item.gps = &gps;
    return item;
}

// Whether a GPS message is one, although no message follows. One whose last sentence is cut by a
// wrong size field is none.
bool TraceReader::State::isSoundAlone(std::span<const uint8_t> message) {
    if (message.back() != '\n') {
        return false;
    }
    return isCanonical(message.subspan(MessageBase::MO_BASE_DERIVED)) ||
           !resync.soundBegins(position + 1, position + message.size());
}

TraceItem TraceReader::State::takeOther(size_t length) {
    switch (resync.judgeInSequence(position, length)) {
        case Verdict::SOUND:
            return take(TraceItem::Kind::OTHER, length);
        case Verdict::UNSOUND:
            return beginDamage(NOTHING_FOLLOWS);
        case Verdict::UNDECIDED:
            break;
    }
    return theEnd();
}

TraceItem TraceReader::State::take(TraceItem::Kind kind, size_t length) {
    TraceItem item;
    item.kind = kind;
    item.offset = position;
    item.bytes = {window.at(position), length};
    item.length = length;
    item.id = messageId(item.bytes.data());
    position += length;
    found = true;
    resync.setFound(messageStamp(item.bytes.data()));
    return item;
}

// Whether the trace ends at this offset, or something follows that may be a message.
bool TraceReader::State::endsOrGoesOn(uint64_t offset) {
    const size_t there = window.available(offset, HEADER_FRONT);
    return there == 0 || (there < HEADER_FRONT ? growing : mayBeHeader(window.at(offset)));
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
        const Resync::Place place = resync.find(cursor, cursor + DAMAGE_FRONT);
        passOver(place.offset);
        if (place.verdict == Verdict::SOUND) {
            return endDamage();
        }
        if (place.verdict == Verdict::UNDECIDED) {
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
    return item;
}

TraceItem TraceReader::State::theEnd() {
    window.throwReadError();
    if (growing) {
        window.forgetFrom(damage ? cursor : position);
    }
    TraceItem item;
    item.offset = position;
    return item;
}

}  // namespace vextrace
