#pragma once

#include <cstdint>
#include <deque>

#include "libvexstream/sentence.h"
#include "libvextrace/MessageBase.h"

namespace vextrace {

/// When which byte of an input arrived, as far back as a sentence can begin.
class Arrivals {
public:
    /// The bytes from \p offset on arrived at that time, up to those of the next call.
    void note(uint64_t offset, timeStamp_t time) {
        pieces.push_back({offset, time});
        forgetBefore(offset - (offset < FURTHEST ? offset : FURTHEST));
    }

    /// When a byte arrived. To be asked for in ascending order.
    timeStamp_t of(uint64_t offset) {
        forgetBefore(offset);
        return pieces.empty() ? 0 : pieces.front().time;
    }

private:
    struct Piece {
        uint64_t offset;
        timeStamp_t time;
    };

    static constexpr uint64_t FURTHEST = 2 * MESSAGE_ROOM;

    void forgetBefore(uint64_t offset) {
        while (pieces.size() > 1 && pieces[1].offset <= offset) {
            pieces.pop_front();
        }
    }

    std::deque<Piece> pieces;
};

}  // namespace vextrace
