#include "libvexstream/internal/soundness.h"

#include <cstring>

namespace vextrace {

bool holdsNul(std::span<const uint8_t> payload) {
    return !payload.empty() && std::memchr(payload.data(), 0, payload.size()) != nullptr;
}

bool isCanonical(std::span<const uint8_t> payload) {
    return readCanonical(payload, [](std::string_view /*line*/) { return true; });
}

}  // namespace vextrace
