#include "tools/trace/TraceProof.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "libvexstream/Framer.h"
#include "libvexstream/TraceReader.h"
#include "libvexstream/sentence.h"
#include "libvexstream/utc.h"
#include "tools/io/Progress.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"

namespace vextrace::tools {

namespace {

constexpr uint64_t NANOSECONDS_PER_DAY = 86'400'000'000'000;

// What one message holds of sentences.
constexpr size_t PAYLOAD_MAX =
    0xFFFF - (MessageBase::MO_BASE_DERIVED - MessageBase::MSGSIZE_LENGTH);

// A recorder may write an epoch in parts that has grown beyond what it keeps in memory.
constexpr size_t LARGE_PART = size_t{1} << 20;

// No receiver has so many codes; they are forgotten.
constexpr size_t MOST_CODES = 4096;

struct LogSentence {
    std::string stored;
    uint64_t offset = 0;
    std::optional<TimeOfDay> time;

    std::string_view code() const {
        return std::string_view(stored).substr(0, GPSTraceMessage::NMEA_CODE_SIZE);
    }
};

// The sentences of the log, as messages store them.
class LogSentences {
public:
    explicit LogSentences(InputFile& log) : input(log), progress(log.size()), bytes(BUFFER_SIZE) {}

    // The next sentence, not taken yet; null at the end.
    const LogSentence* peek() {
        if (taken && read()) {
            taken = false;
        }
        return taken ? nullptr : &next;
    }

    // What peek() gave; valid until the next one is peeked at.
    const LogSentence& take() {
        taken = true;
        return next;
    }

private:
    static constexpr size_t BUFFER_SIZE = size_t{64} * 1024;

    bool read() {
        std::optional<Framer::Sentence> sentence = framer.next();
        while (!sentence && !ended) {
            readInput();
            sentence = framer.next();
        }
        if (sentence) {
            store(*sentence);
        }
        return sentence.has_value();
    }

    void readInput() {
        const size_t count = input.read(bytes.data(), bytes.size());
        if (count == 0) {
            ended = true;
            framer.finish();
        } else {
            framer.feed({reinterpret_cast<const char*>(bytes.data()), count});
        }
        progress.update(framer.counters().bytesRead);
    }

    // As a message does: any talker that begins with G becomes GP, and the end is a line feed.
    void store(const Framer::Sentence& sentence) {
        next.stored = sentence.text;
        if (next.stored.starts_with("$G")) {
            next.stored[2] = 'P';
        }
        if (!next.stored.ends_with('\n')) {
            next.stored += '\n';
        }
        next.offset = sentence.offset;
        next.time = timeOf(sentence.text);
    }

    InputFile& input;
    Progress progress;
    std::vector<uint8_t> bytes;
    Framer framer;
    bool ended = false;
    LogSentence next;
    bool taken = true;
};

// A message of the trace, and which of its sentences were found in the log.
class OpenMessage {
public:
    OpenMessage(uint64_t messageOffset, std::unique_ptr<GPSTraceMessage> message)
        : offset(messageOffset), stamp(message->getTimeStamp()), gps(std::move(message)) {
        const auto& sentences = gps->getSentences();
        rest.reserve(sentences.size());
        for (const auto& entry : sentences) {
            rest.push_back({&entry, false});
        }
        restSize = rest.size();
    }

    uint64_t offset;
    timeStamp_t stamp;

    // Whether the sentence is one of those that were not found yet.
    bool lacks(const LogSentence& sentence) {
        const Held* held = find(sentence.code());
        return held == nullptr || held->found || held->entry->second != sentence.stored;
    }

    void setFound(const LogSentence& sentence) {
        find(sentence.code())->found = true;
        --restSize;
    }

    bool isUsedUp() const { return restSize == 0; }

    // The code of a sentence that was not found.
    const std::string& restCode() const {
        return std::find_if(rest.begin(), rest.end(), [](const Held& held) { return !held.found; })
            ->entry->first;
    }

private:
    struct Held {
        const std::pair<const std::string, const std::string>* entry;
        bool found;
    };

    Held* find(std::string_view code) {
        const auto place = std::lower_bound(
            rest.begin(), rest.end(), code,
            [](const Held& held, std::string_view other) { return held.entry->first < other; });
        return place != rest.end() && place->entry->first == code ? &*place : nullptr;
    }

    std::unique_ptr<GPSTraceMessage> gps;
    std::vector<Held> rest;  // in the order of the codes
    size_t restSize = 0;
};

// Where the sentences of an epoch, or of a part of it, belong: the k-th of a code into the k-th
// message, or the next behind it that has room.
class Places {
public:
    // None is taken any more.
    void clear() {
        sizes.clear();
        bytes = 0;
        ++part;
        if (lastPlaces.size() > MOST_CODES) {
            lastPlaces.clear();
        }
    }

    size_t placeOf(const LogSentence& sentence) const {
        const auto last = lastPlaces.find(sentence.code());
        const bool isFirst = last == lastPlaces.end() || last->second.part != part;
        size_t place = isFirst ? 0 : last->second.number + 1;
        while (place < sizes.size() && sizes[place] + sentence.stored.size() > PAYLOAD_MAX) {
            ++place;
        }
        return place;
    }

    void take(const LogSentence& sentence, size_t place) {
        sizes.resize(std::max(sizes.size(), place + 1));
        sizes[place] += sentence.stored.size();
        bytes += sentence.stored.size();
        lastPlaces.insert_or_assign(std::string(sentence.code()), Place{part, place});
    }

    bool empty() const { return sizes.empty(); }
    bool isLarge() const { return bytes + PAYLOAD_MAX > LARGE_PART; }

private:
    // The last one that a code took, in the part with this number.
    struct Place {
        uint64_t part;
        size_t number;
    };

    std::map<std::string, Place, std::less<>> lastPlaces;
    uint64_t part = 0;
    std::vector<size_t> sizes;
    size_t bytes = 0;
};

class Proof {
public:
    Proof(InputFile& logFile, InputFile& traceFile, const RecordingRules& recordingRules)
        : logName(logFile.name()),
          traceName(traceFile.name()),
          log(logFile),
          trace(traceFile),
          rules(recordingRules),
          date(firstDate()) {}

    ProofCounters run() {
        while (log.peek() != nullptr) {
            proveEpoch();
        }
        messages.clear();
        if (pullMessage()) {
            differ(messages.back(), "is behind the last sentence of the log");
        }
        return counters;
    }

private:
    void proveEpoch() {
        beginEpoch();
        do {
            proveSentence(log.take());
        } while (log.peek() != nullptr && belongsToEpoch(*log.peek()));
        proveUsedUp();
        proveStamp();
        if (time) {
            date = dateOfEpoch();
            lastTime = time;
        }
        ++counters.epochs;
    }

    void beginEpoch() {
        messages.clear();
        places.clear();
        time.reset();
        ownDate.reset();
        stamp.reset();
        isSplit = false;
    }

    bool belongsToEpoch(const LogSentence& sentence) const {
        return !sentence.time || !time || *sentence.time == *time;
    }

    void proveSentence(const LogSentence& sentence) {
        findInTrace(sentence);
        noteTime(sentence);
        ++counters.sentences;
    }

    void noteTime(const LogSentence& sentence) {
        if (!sentence.time) {
            return;
        }
        ++counters.timed;
        if (!time) {
            time = sentence.time;
        }
        if (!ownDate) {
            ownDate = dateOf(sentence.stored);
        }
    }

    void findInTrace(const LogSentence& sentence) {
        size_t place = places.placeOf(sentence);
        const bool isThere = isAt(sentence, place);
        if (!isThere || bearsAnotherStamp(place)) {
            const uint64_t offset = offsetOf(place);
            const bool beginsPart = beginPart() && isAt(sentence, 0);
            if (!isThere && !beginsPart) {
                throw DataError(
                    fmt::format("{}: the message at byte {} lacks the sentence at byte {} of {}",
                                traceName, offset, sentence.offset, logName));
            }
            place = beginsPart ? 0 : place;
            if (beginsPart && bearsAnotherStamp(place) && (rules.live || !time)) {
                beginAnew();
            }
        }
        OpenMessage& message = messages[place];
        proveOneStamp(message);
        message.setFound(sentence);
        places.take(sentence, place);
    }

    // Whether the message at the place of this part holds the sentence still.
    bool isAt(const LogSentence& sentence, size_t place) {
        while (messages.size() <= place) {
            if (!pullMessage()) {
                return false;
            }
        }
        return !messages[place].lacks(sentence);
    }

    bool bearsAnotherStamp(size_t place) const { return stamp && messages[place].stamp != *stamp; }

    // An epoch may go on in new messages when those before are used up; false where it may not.
    bool beginPart() {
        const auto open = std::find_if(messages.begin(), messages.end(),
                                       [](const OpenMessage& m) { return !m.isUsedUp(); });
        const bool isLarge = places.isLarge();
        if (messages.end() - open > 1 || places.empty() || !(rules.live || isLarge)) {
            return false;
        }
        messages.erase(messages.begin(), open);
        if (!isLarge && !isSplit) {
            isSplit = true;
            ++counters.splitEpochs;
        }
        proveStamp();
        places.clear();
        return true;
    }

    // A part bears a stamp of its own where those before were written without a time, or a date; or
    // where another recorder went on with the trace, which then knows neither.
    void beginAnew() {
        time.reset();
        ownDate.reset();
        stamp.reset();
        forgetEpochBefore();
    }

    void forgetEpochBefore() {
        date = firstDate();
        lastTime.reset();
    }

    std::chrono::sys_days firstDate() const { return rules.date.value_or(std::chrono::sys_days()); }

    uint64_t offsetOf(size_t place) const {
        return place < messages.size() ? messages[place].offset : trace.position();
    }

    // The next GPS message of the trace; false at its end.
    bool pullMessage() {
        while (true) {
            TraceItem item = trace.next();
            switch (item.kind) {
                case TraceItem::Kind::GPS:
                    messages.emplace_back(item.offset,
                                          std::make_unique<GPSTraceMessage>(item.gps->message()));
                    ++counters.messages;
                    return true;
                case TraceItem::Kind::OTHER:
                    ++counters.otherMessages;
                    break;
                case TraceItem::Kind::DAMAGE:
                    refuseDamage(item);
                case TraceItem::Kind::END:
                    return false;
            }
        }
    }

    [[noreturn]] void refuseDamage(const TraceItem& damage) const {
        if (damage.offset == 0 && damage.reachesEnd) {
            throw DataError(fmt::format("{}: no trace: {} without any message", traceName,
                                        counted(damage.length, "byte")));
        }
        throw DataError(
            fmt::format("{}: damaged at byte {}: {}", traceName, damage.offset, damage.reason));
    }

    void proveOneStamp(const OpenMessage& message) {
        if (!stamp) {
            stamp = message.stamp;
            stampOffset = message.offset;
        }
        if (message.stamp != *stamp) {
            differ(message, fmt::format("bears {}, but its epoch, from byte {} on, {}",
                                        utcText(message.stamp), stampOffset, utcText(*stamp)));
        }
    }

    void proveUsedUp() const {
        for (const OpenMessage& message : messages) {
            if (!message.isUsedUp()) {
                differ(message, fmt::format("holds a {} that the log does not have in its epoch",
                                            escaped(message.restCode())));
            }
        }
    }

    // The stamp says the time of every timed sentence up to here, for they all have the same, on
    // the date that the epoch itself tells, or else on the one that went on from the epoch before.
    void proveStamp() {
        if (rules.arrival) {
            return;
        }
        if (rules.live && *stamp != stampOfEpoch()) {
            forgetEpochBefore();  // as another recorder does that went on with the trace
        }
        expectStamp(stampOfEpoch());
    }

    timeStamp_t stampOfEpoch() const {
        return time ? stampOf(dateOfEpoch(), time->nanoseconds) : stampOf(date, 0);
    }

    std::chrono::sys_days dateOfEpoch() const {
        const bool isNextDay =
            lastTime && time->nanoseconds + NANOSECONDS_PER_DAY / 2 < lastTime->nanoseconds;
        return ownDate.value_or(date + std::chrono::days(isNextDay ? 1 : 0));
    }

    void expectStamp(timeStamp_t expected) const {
        if (*stamp != expected) {
            throw DataError(
                fmt::format("{}: the message at byte {} bears {}, but its sentences say {}",
                            traceName, stampOffset, utcText(*stamp), utcText(expected)));
        }
    }

    [[noreturn]] void differ(const OpenMessage& message, const std::string& what) const {
        throw DataError(
            fmt::format("{}: the message at byte {} {}", traceName, message.offset, what));
    }

    const std::string logName;
    const std::string traceName;
    LogSentences log;
    TraceReader trace;
    const RecordingRules rules;
    ProofCounters counters;

    // Of the epoch.
    std::deque<OpenMessage> messages;  // of the part that is compared
    Places places;
    std::optional<TimeOfDay> time;
    std::optional<std::chrono::sys_days> ownDate;
    std::optional<timeStamp_t> stamp;
    uint64_t stampOffset = 0;
    bool isSplit = false;

    // Of the epoch before.
    std::chrono::sys_days date;
    std::optional<TimeOfDay> lastTime;
};

}  // namespace

ProofCounters proveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules) {
    return Proof(log, trace, rules).run();
}

}  // namespace vextrace::tools
