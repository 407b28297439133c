#include "tools/io/writeSome.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace vextrace::tools {

ssize_t writeSome(int fd, const void* bytes, size_t count) {
    const ssize_t written = write(fd, bytes, count);
    if (written == 0) {
        errno = EIO;  // what takes nothing now never will
        return -1;
    }
    if (written < 0 && errno == EAGAIN) {
        pollfd waiting = {fd, POLLOUT, 0};
        poll(&waiting, 1, -1);
        errno = EINTR;
    }
    return written;
}

}  // namespace vextrace::tools
