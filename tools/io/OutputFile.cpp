#include "tools/io/OutputFile.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/writeSome.h"

namespace vextrace::tools {

namespace {

// Terminals, /dev/null and sockets may well be read and written at once.
bool isOneOf(const FileStatus& file, const std::vector<FileStatus>& inputs) {
    return file.kind != FileStatus::Kind::OTHER &&
           std::any_of(inputs.begin(), inputs.end(),
                       [&](const FileStatus& input) { return input.isSameFile(file); });
}

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// The file that a link leads to, so that the link stays.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> name(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return name ? name.get() : "";
}

// Gives the file a name that is free. Not every file system can tell so in the same step.
bool renameToFree(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    struct stat taken = {};
    if (lstat(to.c_str(), &taken) == 0) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, bool force, const Inputs& inputs)
    : target(path), shown(escaped(path)) {
    buffer.room(2 * BUFFER_SIZE);
    if (path == "-" || path == "/dev/stdout") {
        openStandardOutput(inputs);
    } else if (const std::optional<FileStatus> existing = fileStatus(path)) {
        openExisting(*existing, force, inputs);
    } else {
        openNew(force, errno);
    }
}

OutputFile::~OutputFile() {
    if (fd >= 0 && fd != STDOUT_FILENO) {
        close(fd);
    }
    if (!temporary.empty()) {
        unlink(temporary.c_str());
    }
}

void OutputFile::openStandardOutput(const Inputs& inputs) {
    shown = "standard output";
    target.clear();
    fd = STDOUT_FILENO;
    const std::optional<FileStatus> existing = fileStatus(fd);
    if (existing && isOneOf(*existing, inputs)) {
        refuse("is an input, too");
    }
}

void OutputFile::openExisting(const FileStatus& existing, bool force, const Inputs& inputs) {
    const bool isRegular = existing.kind == FileStatus::Kind::REGULAR;
    if (existing.kind == FileStatus::Kind::FOLDER) {
        refuse("is a directory");
    }
    if (isOneOf(existing, inputs)) {
        refuse("is an input, too");
    }
    if ((isRegular || existing.kind == FileStatus::Kind::BLOCK_DEVICE) && !force) {
        refuse("exists; --force replaces it");
    }
    if (!isRegular) {
        openDirectly();
        return;
    }
    target = resolved(target);
    if (target.empty() || access(target.c_str(), W_OK) != 0) {
        refuseForErrno();
    }
    replace = true;
    openTemporary();
    fchmod(fd, existing.permissions);
}

void OutputFile::openNew(bool force, int reason) {
    struct stat link = {};
    const bool isLink = !target.empty() && lstat(target.c_str(), &link) == 0;
    if (reason != ENOENT || target.empty()) {
        errno = reason;
        refuseForErrno();
    }
    if (isLink && !force) {
        refuse("is a link that leads nowhere; --force replaces it");
    }
    replace = force;
    openTemporary();
}

void OutputFile::openDirectly() {
    fd = open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        refuseForErrno();
    }
    target.clear();
}

void OutputFile::openTemporary() {
    const std::string folder = folderOf(target);
    for (int number = 0; fd < 0; ++number) {
        temporary = fmt::format("{}.vextrace-{}-{}", folder, getpid(), number);
        fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST) {
            refuseForErrno();
        }
    }
    removeTemporary.emplace(temporary);
}

void OutputFile::flush() {
    std::string_view rest = buffer.view();
    while (!rest.empty()) {
        const ssize_t count = writeSome(fd, rest.data(), rest.size());
        if (count > 0) {
            rest.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR) {
            failForErrno();
        }
    }
    buffer.clear();
}

void OutputFile::commit() {
    flush();
    if (target.empty()) {
        return;
    }
    // A power failure must not take the old file before the new one is there.
    if (replace && fsync(fd) != 0) {
        failForErrno();
    }
    const bool isClosed = close(std::exchange(fd, -1)) == 0;
    const bool isNamed = isClosed && (replace ? rename(temporary.c_str(), target.c_str()) == 0
                                              : renameToFree(temporary, target));
    if (!isNamed) {
        failForErrno();
    }
    removeTemporary.reset();
    temporary.clear();
}

void OutputFile::refuse(std::string_view reason) const {
    throw UsageError(fmt::format("{}: {}", shown, reason));
}

void OutputFile::refuseForErrno() const {
    refuse(fmt::format("cannot be written: {}", std::strerror(errno)));
}

void OutputFile::failForErrno() const {
    if (errno == EPIPE) {
        throw BrokenPipe();
    }
    throw DataError(fmt::format("{}: cannot be written: {}", shown, std::strerror(errno)));
}

}  // namespace vextrace::tools
