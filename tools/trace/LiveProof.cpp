#include <fmt/core.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "libvexstream/EpochBuilder.h"
#include "libvexstream/Framer.h"
#include "libvexstream/utc.h"
#include "tools/trace/LogInput.h"
#include "tools/trace/ProvenTrace.h"
#include "tools/trace/TraceProof.h"
#include "tools/trace/storedText.h"

namespace vextrace::tools {

namespace {

// A part of an epoch holds no more. So messages that wait for more than that wait in vain.
constexpr size_t PART_ROOM = EpochBuilder::PART_ROOM;

// Goes from run to run: messages of one stamp, and the sentences of the log that they hold, which
// have one time of day at most.
class LiveProof {
public:
    LiveProof(InputFile& logFile, InputFile& traceFile, const RecordingRules& rules)
        : log(logFile),
          trace(traceFile),
          arrival(rules.arrival),
          firstDate(rules.date),
          epochs(std::in_place, StampSource::SENTENCES, firstDate) {}

    ProofCounters run() {
        for (message = trace.next(); message.gps != nullptr;) {
            beginRun();
            while (goesOn()) {
                takeSentence();
            }
            endRun();
        }
        if (const auto& left = peek()) {
            lacks(message.offset, *left);
        }
        counters.messages = trace.messages();
        counters.otherMessages = trace.otherMessages();
        return counters;
    }

private:
    // A sentence of the trace that the log did not bring yet.
    struct Waiting {
        std::string text;
        uint64_t message;
    };

    using Place = std::multimap<std::string, Waiting>::iterator;

    void beginRun() {
        runBegin = message.offset;
        stamp = message.gps->getTimeStamp();
        time.reset();
        text.clear();
        ends.clear();
        messagesOfRun = 0;
        takeMessage();
    }

    bool isOfRun() const { return message.gps != nullptr && message.gps->getTimeStamp() == stamp; }

    void takeMessage() {
        for (const std::string_view sentence : message.gps->getSentences()) {
            waiting.emplace(GpsView::codeOf(sentence),
                            Waiting{std::string(sentence), message.offset});
            waitingBytes += sentence.size();
        }
        ++messagesOfRun;
        message = trace.next();
    }

    bool goesOn() {
        return !waiting.empty() || (isOfRun() && text.size() < PART_ROOM && !nextIsOfOtherTime());
    }

    bool nextIsOfOtherTime() { return peek() && nextTime && time && !(*nextTime == *time); }

    // The next sentence of the log.
    const std::optional<Framer::Sentence>& peek() {
        if (!next) {
            next = log.next(framer);
            nextTime = next ? timeOf(next->text) : std::nullopt;
        }
        return next;
    }

    // The next sentence of the log must be the next of its code in the trace.
    void takeSentence() {
        if (!peek() || nextIsOfOtherTime()) {
            holdsTooMuch();
        }
        const auto place = placeOf(storedCode(next->text));
        if (storedText(next->text) != place->second.text) {
            lacks(place->second.message, *next);
        }
        waitingBytes -= place->second.text.size();
        waiting.erase(place);
        if (nextTime) {
            time = nextTime;
            ++counters.timed;
        }
        text += next->text;
        ends.push_back(text.size());
        next.reset();
    }

    Place placeOf(const std::string& code) {
        auto place = waiting.lower_bound(code);
        while (place == waiting.end() || place->first != code) {
            if (!isOfRun() || waitingBytes > PART_ROOM) {
                lacksNext();
            }
            takeMessage();
            place = waiting.lower_bound(code);
        }
        return place;
    }

    // A recorder that went on is as good as one that began anew.
    void endRun() {
        const std::optional<timeStamp_t> other = record();
        if (other) {
            epochs.emplace(StampSource::SENTENCES, firstDate);
        }
        if (other && record()) {
            trace.differ(runBegin, fmt::format("bears {}, but its sentences say {}", utcText(stamp),
                                               utcText(*other)));
        }
        counters.sentences += ends.size();
        counters.epochs += begun;
        counters.splitEpochs += begun == 0 || messagesOfRun > needed ? 1U : 0U;
    }

    // Records the run again. Gives the stamp that it would have to bear, where it bears another.
    std::optional<timeStamp_t> record() {
        begun = 0;
        needed = 0;
        std::optional<timeStamp_t> other;
        const auto note = [&](const EpochBuilder::Part& part) {
            begun += part.messages != 0 && part.beginsEpoch ? 1U : 0U;
            needed += part.messages;
            if (part.messages != 0 && part.stamp != stamp && !arrival) {
                other = part.stamp;
            }
        };
        size_t begin = 0;
        for (const size_t end : ends) {
            note(epochs->add(std::string_view(text).substr(begin, end - begin), 0));
            begin = end;
        }
        note(epochs->take());
        return other;
    }

    [[noreturn]] void holdsTooMuch() {
        const auto& [code, sentence] = *waiting.begin();
        if (!peek() && ends.empty()) {
            trace.isBehindLog(runBegin);
        }
        trace.holdsTooMuch(sentence.message, code);
    }

    // The message behind those of the run may have it, and bear the wrong stamp.
    [[noreturn]] void lacksNext() const {
        const std::string sentence = storedText(next->text);
        if (message.gps != nullptr && message.gps->getSentence(storedCode(sentence)) == sentence) {
            trace.differInStamp(message, stamp);
        }
        lacks(message.offset, *next);
    }

    [[noreturn]] void lacks(uint64_t offset, const Framer::Sentence& sentence) const {
        trace.lacks(offset, sentence.offset, log.name());
    }

    LogInput log;
    ProvenTrace trace;
    const bool arrival;
    const std::chrono::sys_days firstDate;
    Framer framer;
    std::optional<EpochBuilder> epochs;
    ProofCounters counters;
    std::optional<Framer::Sentence> next;  // of the log, in no run yet
    std::optional<TimeOfDay> nextTime;
    TraceItem message;  // in no run yet

    // The run in hand.
    uint64_t runBegin = 0;
    timeStamp_t stamp = 0;
    std::optional<TimeOfDay> time;
    std::string text;          // its sentences that were found in the log, as they were received
    std::vector<size_t> ends;  // of each of them
    std::multimap<std::string, Waiting> waiting;  // by code
    size_t waitingBytes = 0;
    uint64_t messagesOfRun = 0;
    uint64_t begun = 0;   // epochs
    uint64_t needed = 0;  // messages, were it not divided
};

}  // namespace

ProofCounters proveLiveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules) {
    return LiveProof(log, trace, rules).run();
}

}  // namespace vextrace::tools
