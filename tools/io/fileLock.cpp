#include "tools/io/fileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace vextrace::tools {

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
