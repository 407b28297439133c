#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "libvexstream/internal/Evidence.h"
#include "libvexstream/internal/TraceWindow.h"

namespace vextrace {

/// Whether a message begins somewhere.
enum class Soundness {
    SOUND,
    UNSOUND,
    UNDECIDED  ///< bytes are missing that a growing trace may still get
};

/// Divides a trace into messages and other bytes. A chain of messages is followed as long as it
/// leads on; where it does not, that division is taken which has the most evidence.
///
/// Whatever is kept leads on when it is read again without the bytes between, chains in doubt
/// aside: that a message is kept depends on those before it by the header of the last one alone,
/// and on those behind it in such a way that a message which begins beyond doubt is better than
/// none.
class Division {
public:
    explicit Division(TraceWindow& trace) : window(trace), evidence(trace) {}

    /// Whether more may come at the end of the trace.
    void setGrowing(bool isGrowing);

    /// The message at this offset is taken: the next is judged as the one behind it.
    void setBefore(uint64_t offset);

    /// Whether bytes at \p offset that are a message by themselves, of \p length bytes, are the
    /// next one of the trace, behind the one taken last. A GPS message that holds a NUL byte never
    /// is.
    bool keeps(uint64_t offset, size_t length);

    /// An offset, and what is there.
    struct Place {
        Soundness soundness;
        uint64_t offset;
    };

    /// The first message in [from, to) that begins there beyond doubt. Where there is none, the
    /// offset given back is \p to or the end of the trace.
    Place findBeginning(uint64_t from, uint64_t to);

    /// Whether a message begins in [from, to) beyond doubt.
    bool anyBegins(uint64_t from, uint64_t to);

private:
    struct Chain {
        bool leadsOn;
        std::optional<uint64_t> regained;  // behind what is in doubt
    };

    struct Beginning {
        uint64_t offset;
        int bits;
    };

    Chain follow(uint64_t offset);
    Soundness isBeginning(uint64_t offset);
    bool endsAt(uint64_t offset);
    int ofHistory(uint64_t offset);
    bool swallows(uint64_t offset, size_t length);
    int ofChainTo(uint64_t begin, uint64_t end);
    bool holdsChain(uint64_t offset, size_t length);
    int ofHeld(uint64_t offset, size_t length);
    int ofChain(uint64_t offset, uint64_t end);
    int ofStart(uint64_t offset, uint64_t end);
    Beginning mostIn(uint64_t from, uint64_t to, uint64_t end);
    uint64_t bestFrom(uint64_t offset);
    int within(uint64_t begin, uint64_t end);

    TraceWindow& window;
    Evidence evidence;
    bool growing = false;
    std::optional<std::array<uint8_t, MessageBase::MO_BASE_DERIVED>> before;
    std::vector<int> inSequence;  // kept for its memory
};

}  // namespace vextrace
