#include "tools/io/OutputFile.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "tools/io/descriptors.h"
#include "tools/io/errors.h"

namespace vextrace::tools {

namespace {

// The file that a link leads to, so that the link stays.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> name(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return name ? name.get() : "";
}

class WrittenBytes : public ByteSource {
public:
    explicit WrittenBytes(const Sink& written) : sink(written) {}

    size_t read(uint8_t* dest, size_t room) override {
        const ssize_t count = readAt(sink.descriptor(), dest, room, position);
        if (count < 0) {
            sink.failFor(errno);
        }
        position += static_cast<uint64_t>(count);
        return static_cast<size_t>(count);
    }

private:
    const Sink& sink;
    uint64_t position = 0;
};

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
    : sink(path), target(sink.isStandardOutput() ? "" : path) {
    buffer.room(2 * BUFFER_SIZE);
    if (sink.isStandardOutput()) {
        refuseInputs(fileStatus(sink.descriptor()).value_or(FileStatus()), inputs);
    } else if (const std::optional<FileStatus> existing = fileStatus(path)) {
        openExisting(*existing, force, inputs);
    } else {
        openNew(force, errno);
    }
}

OutputFile::~OutputFile() {
    if (!temporary.empty()) {
        unlink(temporary.c_str());
    }
}

void OutputFile::refuseInputs(const FileStatus& existing, const Inputs& inputs) const {
    if (isOneOf(existing, inputs)) {
        sink.refuse("is an input, too");
    }
}

void OutputFile::refuseRecorded() const {
    if (isRecorded(target)) {
        sink.refuse("is being recorded by another program");
    }
}

void OutputFile::openExisting(const FileStatus& existing, bool force, const Inputs& inputs) {
    const bool isRegular = existing.kind == FileStatus::Kind::REGULAR;
    if (existing.kind == FileStatus::Kind::FOLDER) {
        sink.refuse("is a directory");
    }
    refuseInputs(existing, inputs);
    if ((isRegular || existing.kind == FileStatus::Kind::BLOCK_DEVICE) && !force) {
        sink.refuse("exists; --force replaces it");
    }
    if (!isRegular) {
        if (!sink.open(target, O_WRONLY)) {
            sink.refuseFor(errno);
        }
        target.clear();
        return;
    }
    refuseRecorded();
    target = resolved(target);
    if (target.empty() || access(target.c_str(), W_OK) != 0) {
        sink.refuseFor(errno);
    }
    replace = true;
    openTemporary();
    fchmod(sink.descriptor(), existing.permissions);
}

void OutputFile::openNew(bool force, int reason) {
    struct stat link = {};
    const bool isLink = !target.empty() && lstat(target.c_str(), &link) == 0;
    if (reason != ENOENT || target.empty()) {
        sink.refuseFor(reason);
    }
    if (isLink && !force) {
        sink.refuse("is a link that leads nowhere; --force replaces it");
    }
    replace = force;
    openTemporary();
}

void OutputFile::openTemporary() {
    const std::filesystem::path folder = std::filesystem::path(target).parent_path();
    for (int number = 0; !sink.isOpen(); ++number) {
        temporary = folder / fmt::format(".vextrace-{}-{}", getpid(), number);
        if (!sink.open(temporary, O_RDWR | O_CREAT | O_EXCL) && errno != EEXIST) {
            sink.refuseFor(errno);
        }
    }
    removeTemporary.emplace(temporary);
}

void OutputFile::flush() {
    if (writeAll(sink.descriptor(), buffer.view()) != buffer.size()) {
        sink.failFor(errno);
    }
    buffer.clear();
}

std::unique_ptr<ByteSource> OutputFile::written() {
    flush();
    return std::make_unique<WrittenBytes>(sink);
}

void OutputFile::goBackTo(uint64_t offset) {
    flush();
    if (lseek(sink.descriptor(), static_cast<off_t>(offset), SEEK_SET) < 0) {
        sink.failFor(errno);
    }
}

void OutputFile::endHere() {
    flush();
    const off_t end = lseek(sink.descriptor(), 0, SEEK_CUR);
    if (end < 0 || ftruncate(sink.descriptor(), end) != 0) {
        sink.failFor(errno);
    }
}

void OutputFile::commit() {
    flush();
    if (target.empty()) {
        return;
    }
    // A power failure must leave nothing under the name that is not whole.
    sink.synchronise();
    refuseRecorded();
    if (!sink.close() || !name()) {
        sink.failFor(errno);
    }
    removeTemporary.reset();
    temporary.clear();
    if (!synchroniseFolder(target)) {
        sink.failFor(errno);
    }
}

bool OutputFile::name() const {
    return replace ? rename(temporary.c_str(), target.c_str()) == 0
                   : renameToFree(temporary, target);
}

}  // namespace vextrace::tools
