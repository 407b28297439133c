#include "tools/io/InputFile.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/io/descriptors.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

// A standard input that was closed is held open for writing.
bool isReadable(int fd) {
    if ((fcntl(fd, F_GETFL) & O_ACCMODE) != O_WRONLY) {
        return true;
    }
    errno = EBADF;
    return false;
}

// Serial lines belong to a group.
const char* adviceOn(const std::string& path) {
    struct stat device = {};
    return stat(path.c_str(), &device) == 0 && S_ISCHR(device.st_mode)
               ? "; the group dialout may read serial lines: sudo adduser \"$USER\" dialout, then "
                 "log in anew"
               : "";
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : fd(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)),
      shown(shownName(path)) {
    const std::optional<FileStatus> opened = fd < 0 ? std::nullopt : fileStatus(fd);
    if (!opened || !isReadable(fd)) {
        const int reason = errno;
        throw UsageError(fmt::format("{}: cannot be read: {}{}", shown, std::strerror(reason),
                                     reason == EACCES ? adviceOn(path) : ""));
    }
    status = *opened;
    if (status.kind == FileStatus::Kind::FOLDER) {
        if (fd != STDIN_FILENO) {
            close(fd);
        }
        throw UsageError(fmt::format("{}: is a directory", shown));
    }
}

InputFile::~InputFile() {
    if (fd != STDIN_FILENO) {
        close(fd);
    }
}

size_t InputFile::read(uint8_t* dest, size_t room) {
    const ssize_t count = readSome(fd, dest, room);
    if (count < 0) {
        throw ReadError(fmt::format("{}: cannot be read on at byte {}: {}", shown, position,
                                    std::strerror(errno)));
    }
    position += static_cast<size_t>(count);
    return static_cast<size_t>(count);
}

bool InputFile::goBack(size_t count) {
    if (!size()) {
        return false;
    }
    if (lseek(fd, -static_cast<off_t>(count), SEEK_CUR) < 0) {
        throw DataError(fmt::format("{}: cannot go back to byte {}: {}", shown, position - count,
                                    std::strerror(errno)));
    }
    position -= count;
    return true;
}

std::optional<uint64_t> InputFile::size() const {
    return totalSize({status});
}

}  // namespace vextrace::tools
