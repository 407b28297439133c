#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "libvexstream/internal/GpsPayloads.h"
#include "libvexstream/internal/TraceWindow.h"
#include "libvexstream/internal/soundness.h"

namespace vextrace {

/// How much more likely bytes are as a message than as other bytes, in bits (the binary logarithm
/// of the ratio): above 0 they rather are one, below 0 they rather are none. What can be said of a
/// message is said of it and of the header that its size field leads to, so that the bits of a
/// chain of messages add up.
class Evidence {
public:
    /// Of bytes that are no message's beginning, and of a message with nothing behind it.
    static constexpr int OF_NOTHING_BEHIND = -15;

    /// Of a message by the header of the one before it, at least.
    static constexpr int LEAST_OF_NEIGHBOUR = OF_NOTHING_BEHIND - 6;

    explicit Evidence(TraceWindow& trace);

    /// Whether more may come at the end of the trace.
    void setGrowing(bool isGrowing) { growing = isGrowing; }

    /// What was known of the bytes holds no longer.
    void forget() { payloads.forget(); }

    /// Bytes of the message at \p offset; 0 where there is none: a size field too small for a
    /// header, bytes that are missing, a GPS message that the library would not decode whole.
    size_t lengthAt(uint64_t offset);

    /// Whether the trace ends there, or nothing is there but the beginning of a message, of which
    /// more may come.
    bool endsAt(uint64_t offset) {
        return window.available(offset, 1) == 0 || (growing && isIncomplete(offset));
    }

    /// Where this is above 0, inChain() says no more of a message at \p offset; otherwise none
    /// begins there, and below 0 none will, whatever may still come. Said by the cheapest
    /// questions.
    int atMost(uint64_t offset);

    /// Whether a message of this type may hold others.
    bool mayHold(uint64_t offset);

    /// Whether others may lie within a message, held or not: in the text of GPS there are none.
    bool mayCover(uint64_t offset, size_t length);

    /// Of a GPS message by its own bytes, where its payload is known to be canonical and need not
    /// be looked at for that.
    int ofCanonical(uint64_t offset, size_t length) {
        payloads.noteCanonical(offset, payloadOf(offset, length));
        return ofMessage(offset, length);
    }

    /// Of a message by its own bytes (id, length, payload) and by the header behind it.
    int inChain(uint64_t offset, size_t length);

    /// Of a message by the header of the one before it.
    int behind(const uint8_t* before, uint64_t offset);

private:
    int idOf(const uint8_t* header) const;
    int ofMessage(uint64_t offset, size_t length);
    int ofHeld(uint64_t offset, size_t length);
    bool isIncomplete(uint64_t offset);
    std::span<const uint8_t> payloadOf(uint64_t offset, size_t length) const;
    bool hasHeader(uint64_t offset);
    int ofNext(uint64_t offset, size_t length);
    bool isSentAgain(uint64_t offset, size_t length);
    bool standsAgain(uint64_t offset, size_t length);
    int ofContent(uint64_t offset, size_t length);
    int ofType(uint64_t offset, size_t length);
    int inChainAtMost(uint64_t offset);

    TraceWindow& window;
    const int8_t* idBits;
    bool growing = false;
    GpsPayloads payloads;
};

}  // namespace vextrace
