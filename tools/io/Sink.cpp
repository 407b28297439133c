#include "tools/io/Sink.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

constexpr mode_t AS_THE_USER_WANTS = 0666;

// Nothing of it can wait.
bool isNoDevice(int reason) {
    return reason == EINVAL || reason == EROFS || reason == ENOTSUP;
}

}  // namespace

Sink::Sink(const std::string& path)
    : standard(path == "-" || path == "/dev/stdout"),
      shown(standard ? "standard output" : escaped(path)) {
    if (standard) {
        fd = STDOUT_FILENO;
    }
}

Sink::~Sink() {
    close();
}

bool Sink::open(const std::string& file, int flags) {
    fd = ::open(file.c_str(), flags | O_CLOEXEC | O_NOCTTY, AS_THE_USER_WANTS);
    return fd >= 0;
}

FileStatus Sink::status() const {
    const std::optional<FileStatus> found = fileStatus(fd);
    const int flags = fcntl(fd, F_GETFL);
    if (!found || flags < 0) {
        refuseFor(errno);
    }
    if ((flags & O_ACCMODE) == O_RDONLY) {
        refuseFor(EBADF);
    }
    return *found;
}

void Sink::synchronise() const {
    if (fdatasync(fd) != 0 && !isNoDevice(errno)) {
        failFor(errno);
    }
}

bool Sink::close() {
    const int closed = std::exchange(fd, -1);
    return closed < 0 || standard || ::close(closed) == 0;
}

void Sink::refuse(std::string_view reason) const {
    throw UsageError(fmt::format("{}: {}", shown, reason));
}

void Sink::refuseFor(int reason) const {
    refuse(fmt::format("cannot be written: {}", std::strerror(reason)));
}

void Sink::failFor(int reason) const {
    if (reason == EPIPE) {
        throw BrokenPipe();
    }
    throw DataError(fmt::format("{}: cannot be written: {}", shown, std::strerror(reason)));
}

bool isOneOf(const FileStatus& file, const std::vector<FileStatus>& inputs) {
    return file.kind != FileStatus::Kind::OTHER &&
           std::any_of(inputs.begin(), inputs.end(),
                       [&](const FileStatus& input) { return input.isSameFile(file); });
}

bool synchroniseFolder(const std::string& file) {
    const std::filesystem::path path = std::filesystem::path(file).parent_path();
    const int folder = open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) {
        return errno == EACCES;  // a folder that may be written, but not read
    }
    const bool done = fsync(folder) == 0 || isNoDevice(errno);
    const int reason = errno;
    close(folder);
    errno = reason;
    return done;
}

}  // namespace vextrace::tools
