#include "tools/trace/LiveLine.h"

#include <fmt/core.h>

#include "libvexstream/TraceReader.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"

namespace vextrace::tools {

namespace {

constexpr std::chrono::seconds BETWEEN_UPDATES{1};
constexpr std::chrono::seconds SILENCE{2};  // most receivers send once a second
constexpr std::chrono::seconds PATIENCE{5};
constexpr size_t RATE_UPDATES = 5;

std::string clockText(const std::string& digits) {
    return digits.empty() ? "no time"
                          : fmt::format("{}:{}:{} UTC", digits.substr(0, 2), digits.substr(2, 2),
                                        digits.substr(4, 2));
}

std::string sizeText(uint64_t bytes) {
    const auto size = static_cast<double>(bytes);
    return bytes < 1000      ? counted(bytes, "byte")
           : bytes < 1000000 ? fmt::format("{:.1f} kB", size / 1e3)
                             : fmt::format("{:.1f} MB", size / 1e6);
}

}  // namespace

LiveLine::LiveLine(std::string input, Clock::time_point now)
    : name(std::move(input)), nextUpdate(now + BETWEEN_UPDATES), lastByte(now) {
    counts.emplace_back(now, 0);
}

void LiveLine::note(const Framer::Sentence& sentence) {
    if (sentence.checksum == Checksum::WRONG) {
        return;
    }
    if (const std::optional<TimeOfDay> sent = timeOf(sentence.text)) {
        time = sent->digits;
    }
}

// A fix with a wrong checksum is none to be shown.
void LiveLine::note(const EpochBuilder::Part& part) {
    MemorySource bytes(part.bytes);
    TraceReader messages(bytes);
    for (TraceItem item = messages.next(); item.gps != nullptr; item = messages.next()) {
        std::optional<Fix> found = fixes.read(*item.gps);
        if (found && !found->repeats && !found->isDoubtful()) {
            fix = std::move(found);
        }
    }
}

void LiveLine::update(const Counters& read, uint64_t traceBytes, Clock::time_point now) {
    if (!line.isShown() || now < nextUpdate) {
        return;
    }
    nextUpdate = now + BETWEEN_UPDATES;
    hint(read, now);
    line.show(text(read, traceBytes, now));
    counts.emplace_back(now, read.sentences());
    if (counts.size() > RATE_UPDATES) {
        counts.pop_front();
    }
}

std::chrono::milliseconds LiveLine::untilUpdate(Clock::time_point now) const {
    return std::chrono::ceil<std::chrono::milliseconds>(nextUpdate - now);
}

std::string LiveLine::text(const Counters& read, uint64_t traceBytes, Clock::time_point now) const {
    std::string text = clockText(time);
    text += fix && fix->valid ? ", fix" : ", no fix";
    if (fix && fix->satellites) {
        text += ", " + counted(*fix->satellites, "satellite");
    }
    if (fix && fix->valid && fix->speed) {
        text += fmt::format(", {:.1f} km/h", *fix->speed);
    }
    text +=
        fmt::format(", {:.0f} sentences/s, {} skipped, {} recorded", sentencesPerSecond(read, now),
                    counted(read.bytesSkipped(), "byte"), sizeText(traceBytes));
    if (now - lastByte >= SILENCE) {
        text +=
            fmt::format(", silent for {} s",
                        std::chrono::duration_cast<std::chrono::seconds>(now - lastByte).count());
    }
    return text;
}

double LiveLine::sentencesPerSecond(const Counters& read, Clock::time_point now) const {
    const auto& [begin, count] = counts.front();
    const std::chrono::duration<double> duration = now - begin;
    return duration.count() > 0 ? static_cast<double>(read.sentences() - count) / duration.count()
                                : 0;
}

void LiveLine::hint(const Counters& read, Clock::time_point now) {
    if (read.sentences() != sentencesSeen) {
        sentencesSeen = read.sentences();
        bytesThen = read.bytesRead;
        skippedSince.reset();
    } else if (read.bytesRead != bytesThen && !skippedSince) {
        skippedSince = now;
    }
    if (!hinted && skippedSince && now - *skippedSince >= PATIENCE) {
        hinted = true;
        tell(name +
             ": only bytes to skip for 5 seconds: the rate is another (--baud 4800, 9600, 38400, "
             "115200), or the receiver sends a binary protocol and must be told to send NMEA");
    }
}

}  // namespace vextrace::tools
