#include "libvexstream/DescriptorSource.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace vextrace {

namespace {

// What every system takes in one call.
constexpr size_t MOST_AT_ONCE = size_t{1} << 30;

}  // namespace

size_t DescriptorSource::read(uint8_t* dest, size_t room) {
    for (;;) {
        const auto count = ::read(fd, dest, std::min(room, MOST_AT_ONCE));
        if (count >= 0) {
            return static_cast<size_t>(count);
        }
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "a trace cannot be read on");
        }
    }
}

}  // namespace vextrace
