#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "libvexstream/EpochBuilder.h"
#include "libvexstream/Fix.h"
#include "libvexstream/Framer.h"
#include "tools/io/TerminalLine.h"

namespace vextrace::tools {

/// A line on the terminal that tells how a recording goes: time and fix of the receiver, how much
/// comes, what it becomes, and since when nothing comes. Renewed every second.
class LiveLine {
public:
    using Clock = std::chrono::steady_clock;
    using Counters = Framer::Counters;

    /// \param input  the name of what is recorded, for people
    LiveLine(std::string input, Clock::time_point now);

    /// Whether there is a terminal for it.
    bool isShown() const { return line.isShown(); }

    /// A sentence was received.
    void note(const Framer::Sentence& sentence);

    /// Messages were given to the trace.
    void note(const EpochBuilder::Part& part);

    /// Bytes were received.
    void noteBytes(Clock::time_point now) { lastByte = now; }

    /// Renews the line where it is time to, and says so once where nothing but skipped bytes comes.
    /// \param traceBytes  the size of what was recorded
    void update(const Counters& read, uint64_t traceBytes, Clock::time_point now);

    /// Until the line is to be renewed.
    std::chrono::milliseconds untilUpdate(Clock::time_point now) const;

    /// What the line says.
    std::string text(const Counters& read, uint64_t traceBytes, Clock::time_point now) const;

private:
    double sentencesPerSecond(const Counters& read, Clock::time_point now) const;
    void hint(const Counters& read, Clock::time_point now);

    const std::string name;
    TerminalLine line;
    Clock::time_point nextUpdate;
    Clock::time_point lastByte;
    FixReader fixes;
    std::optional<Fix> fix;
    std::string time;                                           // of the receiver, hhmmss
    std::deque<std::pair<Clock::time_point, uint64_t>> counts;  // of sentences, some seconds back

    // Since the last sentence.
    uint64_t sentencesSeen = 0;
    uint64_t bytesThen = 0;
    std::optional<Clock::time_point> skippedSince;
    bool hinted = false;
};

}  // namespace vextrace::tools
