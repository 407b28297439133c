#include "tools/io/readAt.h"

#include <unistd.h>

#include <cerrno>

namespace vextrace::tools {

ssize_t readAt(int fd, void* dest, size_t room, uint64_t offset) {
    ssize_t count = 0;
    do {
        count = pread(fd, dest, room, static_cast<off_t>(offset));
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace vextrace::tools
