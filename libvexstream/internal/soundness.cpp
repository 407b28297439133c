#include "libvexstream/internal/soundness.h"

#include <cstring>
#include <string_view>

#include "libvexstream/internal/codeNumber.h"

namespace vextrace {

bool holdsNul(std::span<const uint8_t> payload) {
    return !payload.empty() && std::memchr(payload.data(), 0, payload.size()) != nullptr;
}

bool isCanonical(std::span<const uint8_t> payload) {
    if (payload.empty() || payload.back() != '\n' || holdsNul(payload)) {
        return false;
    }
    std::string_view rest(reinterpret_cast<const char*>(payload.data()), payload.size());
    uint64_t previous = 0;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n') + 1);
        const uint64_t code = codeNumber(line);
        if (line.size() == 1 || code <= previous) {
            return false;
        }
        previous = code;
        rest.remove_prefix(line.size());
    }
    return true;
}

}  // namespace vextrace
