#include "libvexstream/internal/GpsPayloads.h"

#include <algorithm>

#include "libvexstream/internal/soundness.h"

namespace vextrace {

GpsPayloads::Kind GpsPayloads::kindOf(uint64_t offset, std::span<const uint8_t> payload) {
    Known& entry = known[offset % known.size()];
    if (entry.offset == offset && entry.size == payload.size()) {
        return entry.kind;
    }
    const auto isLineFeed = [](uint8_t byte) { return byte == '\n'; };
    entry = {offset, payload.size(), Kind::LOOSE};
    if (isCanonical(payload)) {
        noteCanonical(offset, payload);
    } else if (holdsNul(payload) || std::all_of(payload.begin(), payload.end(), isLineFeed)) {
        entry.kind = Kind::UNREADABLE;
    } else if (payload.back() != '\n') {
        entry.kind = Kind::CUT;
    }
    return entry.kind;
}

void GpsPayloads::noteCanonical(uint64_t offset, std::span<const uint8_t> payload) {
    const bool isSentence = (payload[0] == '$' || payload[0] == '!') && payload.size() > 2;
    known[offset % known.size()] = {offset, payload.size(),
                                    isSentence ? Kind::SENTENCES : Kind::LINES};
}

}  // namespace vextrace
