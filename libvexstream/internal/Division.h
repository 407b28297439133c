#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "libvexstream/internal/BestDivision.h"
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
/// leads on; where it breaks off, the division is taken that has the most evidence.
class Division {
public:
    explicit Division(TraceWindow& trace) : window(trace), evidence(trace), best(trace, evidence) {}

    /// Whether more may come at the end of the trace.
    void setGrowing(bool isGrowing);

    /// What is at the end of a growing trace may be something else from now on.
    void forget();

    /// Whether the message that begins at an offset, which is not all there yet, may hold others.
    bool mayHold(uint64_t offset);

    /// The message at this offset is taken: the next is judged as the one behind it.
    void setBefore(uint64_t offset);

    /// Whether bytes at \p offset that are a message by themselves, of \p length bytes, are the
    /// next one of the trace, behind the one taken last. A GPS message that holds a NUL byte never
    /// is.
    bool keeps(uint64_t offset, size_t length);

    /// The same of a GPS message whose payload is known to be canonical, where it need not be asked
    /// what stands around it; looks at nothing else.
    bool keepsCanonical(uint64_t offset, size_t length);

    /// An offset, and what is there.
    struct Place {
        Soundness soundness;
        uint64_t offset;
    };

    /// Where a message begins beyond doubt in [from, to), or behind it where what begins there is
    /// none. Where there is none, the offset given back is the first that was not looked at, or the
    /// end of the trace.
    Place findBeginning(uint64_t from, uint64_t to);

    /// Whether a message begins in [from, to) beyond doubt.
    bool anyBegins(uint64_t from, uint64_t to);

private:
    bool leadsOn(uint64_t offset);
    bool mayBegin(uint64_t offset);
    Soundness isBeginning(uint64_t offset);
    int ofHistory(uint64_t offset);
    bool mayBeTooLong(uint64_t offset, size_t length);

    TraceWindow& window;
    Evidence evidence;
    BestDivision best;
    bool growing = false;
    std::optional<std::array<uint8_t, MessageBase::MO_BASE_DERIVED>> before;
};

}  // namespace vextrace
