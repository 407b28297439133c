#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "libvexstream/internal/TraceWindow.h"
#include "libvextrace/MessageBase.h"

namespace vextrace {

/// Whether bytes are a sound message.
enum class Verdict {
    SOUND,
    UNSOUND,
    UNDECIDED  ///< bytes are missing that a growing trace may still get
};

/// Tells messages from other bytes where the bytes themselves leave doubts. A GPS message is known
/// by its payload. A message of another type has none that could be checked: it is known by the
/// chain of messages that its size field leads to, which bytes that are no messages seldom make,
/// the less so with times near one another.
class Resync {
public:
    explicit Resync(TraceWindow& trace) : window(trace) {}

    /// Whether more may come at the end of the trace.
    void setGrowing(bool isGrowing) { growing = isGrowing; }

    /// A sound message was found: the bytes are a trace, for which less evidence will do.
    void setFound(timeStamp_t stamp) { lastStamp = stamp; }

    /// An offset, and what is there.
    struct Place {
        Verdict verdict;
        uint64_t offset;
    };

    /// The first sound message that begins in [from, to), or behind it where that is more likely.
    /// Where there is none, nothing sound begins before the offset given back, which is \p to or
    /// the end of the trace.
    Place find(uint64_t from, uint64_t to);

    /// Whether the message of another type at \p offset, \p length bytes long, is sound, given that
    /// a sound message or the beginning of the trace lies before it.
    Verdict judgeInSequence(uint64_t offset, size_t length);

    /// Whether a sound message begins in [from, to).
    bool soundBegins(uint64_t from, uint64_t to);

private:
    Verdict judgeKnown(uint64_t offset, uint64_t end);
    Verdict judgeUnknown(uint64_t offset, uint64_t end);
    Verdict judge(uint64_t offset);
    Verdict judgeGps(uint64_t offset, size_t length);
    Verdict judgeOther(uint64_t offset, size_t length);
    Verdict chainFrom(uint64_t start, std::optional<timeStamp_t> time, unsigned enough);
    bool gpsBegins(uint64_t from, uint64_t to);
    bool isTorn(uint64_t offset);
    Verdict chainBehind(uint64_t offset, uint64_t end);
    bool hasLikelyTime(uint64_t offset, uint64_t end);
    bool swallows(uint64_t offset, uint64_t end);
    bool holdsBetter(uint64_t offset, uint64_t end);
    template <class IsMessage>
    void countMessages(const uint8_t* bytes, size_t length, IsMessage isMessage);
    std::optional<uint64_t> betterStart(uint64_t offset);
    bool beginsUnknownRun(uint64_t offset);
    uint64_t behindUnknown(uint64_t offset);

    TraceWindow& window;
    bool growing = false;
    std::optional<timeStamp_t> lastStamp;  // of the last sound message
    uint64_t chainEnd = 0;                 // how far chainFrom() came
    std::vector<uint16_t> counts;          // kept for its memory
};

}  // namespace vextrace
