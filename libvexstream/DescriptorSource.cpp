#include "libvexstream/DescriptorSource.h"

#include <sys/stat.h>
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

uint64_t DescriptorSource::skip(uint64_t count) {
    struct stat file = {};
    const off_t position = lseek(fd, 0, SEEK_CUR);
    if (position < 0 || fstat(fd, &file) != 0 || !S_ISREG(file.st_mode)) {
        return ByteSource::skip(count);
    }
    const auto there = static_cast<uint64_t>(std::max(file.st_size - position, off_t{0}));
    const uint64_t passed = std::min(count, there);
    return lseek(fd, static_cast<off_t>(passed), SEEK_CUR) < 0 ? ByteSource::skip(count) : passed;
}

}  // namespace vextrace
