#include "tools/trace/TraceProof.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/GpsView.h"
#include "libvexstream/Recording.h"
#include "libvextrace/MessageFactory.h"
#include "tools/trace/LogInput.h"
#include "tools/trace/ProvenTrace.h"
#include "tools/trace/storedText.h"

namespace vextrace::tools {

namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t PAYLOAD_BEGIN = MessageBase::MO_BASE_DERIVED;

// The messages of a part.
std::vector<Bytes> messagesOf(const EpochBuilder::Part& part) {
    std::vector<Bytes> messages;
    for (Bytes rest = part.bytes; !rest.empty(); rest = rest.subspan(messages.back().size())) {
        messages.push_back(rest.first(MessageFactory::frame(rest.data(), rest.size()).length));
    }
    return messages;
}

bool holdSame(Bytes a, Bytes b) {
    return std::ranges::equal(a.first(std::min(a.size(), PAYLOAD_BEGIN - sizeof(timeStamp_t))),
                              b.first(PAYLOAD_BEGIN - sizeof(timeStamp_t))) &&
           std::ranges::equal(a.subspan(PAYLOAD_BEGIN), b.subspan(PAYLOAD_BEGIN));
}

class Proof {
public:
    Proof(InputFile& logFile, InputFile& traceFile, const RecordingRules& rules)
        : log(logFile),
          trace(traceFile),
          arrival(rules.arrival),
          recording(StampSource::SENTENCES, rules.date) {}

    ProofCounters run() {
        while (const std::optional<Recording::Step> step = log.next(recording)) {
            prove(step->part);
            note(step->sentence);
        }
        prove(recording.take());
        if (const TraceItem rest = trace.next(); rest.gps != nullptr) {
            trace.isBehindLog(rest.offset);
        }
        counters.sentences = recording.counters().sentences();
        counters.messages = trace.messages();
        counters.otherMessages = trace.otherMessages();
        return counters;
    }

private:
    struct LogSentence {
        uint64_t offset;
        size_t begin;  // as much of it as its code is made of
        size_t size;
    };

    void note(const Framer::Sentence& sentence) {
        const std::string_view begin = sentence.text.substr(0, GPSTraceMessage::NMEA_CODE_SIZE);
        sentences.push_back({sentence.offset, begins.size(), begin.size()});
        begins += begin;
    }

    void prove(const EpochBuilder::Part& part) {
        if (part.messages == 0) {
            return;
        }
        if (part.beginsEpoch) {
            ++counters.epochs;
            stamp.reset();
        }
        const std::vector<Bytes> messages = messagesOf(part);
        for (size_t number = 0; number < messages.size(); ++number) {
            // Nearly all are the same, but for stamps of arrival.
            if (!arrival && trace.passOver(messages[number])) {
                continue;
            }
            const TraceItem found = trace.next();
            if (found.gps == nullptr || !holdSame(found.bytes, messages[number])) {
                proveSentences(found, std::span(messages).first(number + 1));
            }
            proveStamp(found, part.stamp);
        }
        counters.timed += part.timedSentences;
        sentences.clear();
        begins.clear();
    }

    // Bytes may differ where another program wrote the same sentences. The last of the messages is
    // the one that is expected.
    void proveSentences(const TraceItem& found, std::span<const Bytes> messages) const {
        const GpsView none;
        const GpsView& held = found.gps == nullptr ? none : *found.gps;
        GpsView expected;
        expected.read(messages.back());
        std::optional<uint64_t> lacking;
        for (const std::string_view sentence : expected.getSentences()) {
            if (held.getSentence(GpsView::codeOf(sentence)) != sentence) {
                const uint64_t offset = offsetOf(GpsView::codeOf(sentence), messages);
                lacking = std::min(lacking.value_or(offset), offset);
            }
        }
        if (lacking) {
            trace.lacks(found.offset, *lacking, log.name());
        }
        for (const std::string_view sentence : held.getSentences()) {
            const std::string_view code = GpsView::codeOf(sentence);
            if (expected.getSentence(code).empty()) {
                trace.holdsTooMuch(found.offset, code);
            }
        }
    }

    // Where the log has the sentence of this code that belongs into the last of the messages: the
    // k-th of the part is in the k-th message that has one.
    uint64_t offsetOf(std::string_view code, std::span<const Bytes> messages) const {
        auto number = std::ranges::count_if(messages, [&](Bytes message) {
            GpsView view;
            view.read(message);
            return !view.getSentence(code).empty();
        });
        const auto place = std::ranges::find_if(sentences, [&](const LogSentence& sentence) {
            return storedCode(begins.substr(sentence.begin, sentence.size)) == code &&
                   --number == 0;
        });
        return place->offset;
    }

    // Which stamp an arrival gave nobody knows, but it is one for the whole epoch.
    void proveStamp(const TraceItem& message, timeStamp_t expected) {
        const timeStamp_t found = message.gps->getTimeStamp();
        stamp = arrival ? stamp.value_or(found) : expected;
        if (found != *stamp) {
            trace.differInStamp(message, *stamp);
        }
    }

    LogInput log;
    ProvenTrace trace;
    const bool arrival;
    Recording recording;
    std::vector<LogSentence> sentences;  // of the part
    std::string begins;                  // of them
    std::optional<timeStamp_t> stamp;    // that the messages of the epoch bear
    ProofCounters counters;
};

}  // namespace

ProofCounters proveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules) {
    return Proof(log, trace, rules).run();
}

}  // namespace vextrace::tools
