#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "libvexstream/internal/Evidence.h"
#include "libvexstream/internal/TraceWindow.h"

namespace vextrace {

/// The division of a part of a trace into messages and other bytes that has the most evidence. It
/// is found in one pass backwards, in which each offset i is weighed once:
///
///     S[i] = max(w[i] + S[i + length[i]], D[i] - cost of a damage)         in sequence
///     D[i] = max(D[i + 1], w[i] + S[i + length[i]] - cost of a beginning)  in damage
///
/// where w is the evidence of the message at i in bits, and one begins in damage only where the
/// chain from there on leaves no doubt. S is found where something leads to. Parts begin at
/// multiples of their length, so that those who begin to read elsewhere find the same.
class BestDivision {
public:
    /// Evidence of a chain that leaves no doubt. A message begins in the midst of anything once in
    /// 2^64 places by chance, of which a trace of 1 GB has 2^30: beyond doubt, even where chance is
    /// not quite what the evidence takes it for.
    static constexpr int ENOUGH_TO_BEGIN = 64;

    /// How far a chain is followed.
    static constexpr unsigned MOST_MESSAGES = 16;

    BestDivision(TraceWindow& trace, Evidence& ofMessages) : window(trace), evidence(ofMessages) {}

    /// What was found holds no longer.
    void forget() {
        count = 0;
        links = {};
    }

    /// Messages that follow one another, as long as all of them so far have evidence together.
    struct Chain {
        int bits;      ///< of all of them; no more are followed where there is no doubt
        uint64_t end;  ///< where it breaks off, or was followed to
        bool breaksOff;
    };

    Chain chainFrom(uint64_t offset, unsigned mostMessages = MOST_MESSAGES);

    /// Finds the division of the part in which an offset is, from there on. The functions below
    /// answer for offsets from there on.
    void find(uint64_t offset);

    /// Behind the part that was found.
    uint64_t end() const { return std::min<uint64_t>(partEnd, first + count); }

    /// Where the next message begins from an offset on that is in damage; none where it is in
    /// another part.
    std::optional<uint64_t> beginFrom(uint64_t offset) const;

    /// The most evidence of what follows where an offset is in sequence.
    int inSequence(uint64_t offset);

    /// The same where damage begins there.
    int inDamage(uint64_t offset) const;

    /// Of a message in its chain. What it holds counts for it, and against it where its type holds
    /// none, unless it is all of the payload.
    int ofMessage(uint64_t offset, size_t length);

    /// Whether nothing follows a message, and one begins within it which it does not hold: what
    /// speaks for its header is as true of a message that has lost bytes.
    bool isTorn(uint64_t offset, size_t length);

private:
    // Places are told by their distance from the first one.
    struct Place {
        uint32_t begin;        // where D has its next message
        uint32_t next = 0;     // where S goes on: behind its message, or where D does
        uint32_t farther = 0;  // where S goes on some steps later
        uint16_t rank = 0;     // of these steps
        uint16_t chain = 0;    // bits of the chain from there on
        int inSequence = 0;    // S; all but D is known where next is not 0
    };

    struct Behind {
        int inSequence;
        int chain;
    };

    struct Link {
        uint64_t offset = ~uint64_t{0};
        int bits = 0;
    };

    size_t placeOf(uint64_t offset) const { return static_cast<size_t>(offset - first); }
    int ofLink(uint64_t offset, size_t length);
    bool mayBegin(size_t i);
    void settle(size_t i);
    void weigh(size_t i);
    void goOn(Place& place, size_t next) const;
    bool leadsTo(size_t i, size_t end) const;
    uint32_t beginBehind(size_t i) const;
    int inDamageBehind(size_t i) const;
    int withHeld(int bits, uint64_t offset, size_t length);
    Behind behindOf(uint64_t offset);

    TraceWindow& window;
    Evidence& evidence;
    uint64_t first = 0;    // offset of the first place
    uint64_t partEnd = 0;  // what is behind it is there for those in front of it
    size_t count = 0;      // of the places that are known
    std::vector<Place> places;
    std::vector<uint32_t> open;  // places that lead to one another and wait for what is behind them
    std::array<Link, 64> links;  // of the chains that were followed last
};

}  // namespace vextrace
