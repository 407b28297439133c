#include "tools/io/readSome.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace vextrace::tools {

ssize_t readSome(int fd, void* dest, size_t room) {
    for (;;) {
        const ssize_t count = read(fd, dest, room);
        if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
            return count;
        }
        if (errno == EAGAIN) {
            pollfd waiting = {fd, POLLIN, 0};
            poll(&waiting, 1, -1);
        }
    }
}

}  // namespace vextrace::tools
