#include "tools/io/descriptors.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "tools/io/signals.h"

namespace vextrace::tools {

namespace {

void waitFor(int fd, short event) {
    pollfd waiting = {fd, event, 0};
    poll(&waiting, 1, -1);
}

}  // namespace

ssize_t readSome(int fd, void* dest, size_t room) {
    for (;;) {
        const ssize_t count = read(fd, dest, room);
        if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
            return count;
        }
        if (errno == EAGAIN) {
            waitFor(fd, POLLIN);
        }
    }
}

ssize_t readAt(int fd, void* dest, size_t room, uint64_t offset) {
    ssize_t count = 0;
    do {
        count = pread(fd, dest, room, static_cast<off_t>(offset));
    } while (count < 0 && errno == EINTR);
    return count;
}

size_t writeSome(int fd, std::string_view bytes) {
    do {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count > 0) {
            return static_cast<size_t>(count);
        }
        if (count == 0) {
            errno = EIO;  // what takes nothing now never will
        } else if (errno == EAGAIN) {
            waitFor(fd, POLLOUT);
            errno = EINTR;
        }
    } while (errno == EINTR && StopSignals::count() < 2);
    return 0;
}

size_t writeAll(int fd, std::string_view bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const size_t count = writeSome(fd, bytes.substr(done));
        if (count == 0) {
            break;
        }
        done += count;
    }
    return done;
}

bool lockFile(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void unlockFile(int descriptor) {
    flock(descriptor, LOCK_UN);
}

bool isRecorded(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    const bool isLocked = flock(file, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(file);
    return isLocked;
}

}  // namespace vextrace::tools
