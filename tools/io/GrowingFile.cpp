#include "tools/io/GrowingFile.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "tools/io/StoppableSource.h"
#include "tools/io/descriptors.h"
#include "tools/io/errors.h"
#include "tools/io/standardStreams.h"

namespace vextrace::tools {

static_assert(sizeof(off_t) == sizeof(uint64_t), "traces may be longer than 2 GiB");

namespace {

// Copies a range of a file to the device of another; false, with the reason in errno, where that
// fails.
bool copyRange(int from, uint64_t begin, uint64_t end, int to) {
    std::vector<char> buffer(size_t{64} * 1024);
    while (begin < end) {
        const size_t wanted = std::min<uint64_t>(buffer.size(), end - begin);
        const ssize_t count = readAt(from, buffer.data(), wanted, begin);
        const auto size = static_cast<size_t>(std::max<ssize_t>(count, 0));
        if (count <= 0 || writeAll(to, {buffer.data(), size}) != size) {
            return false;
        }
        begin += size;
    }
    return fsync(to) == 0;
}

}  // namespace

GrowingFile::GrowingFile(const std::string& path, ExistingFile existing, const InputFile& input)
    : out(path), file(path) {
    if (out.isStandardOutput()) {
        openStandardOutput(input);
    } else {
        openNamed(existing, input);
    }
    hasName = regular && !isRemoved();
}

GrowingFile::~GrowingFile() {
    if (!out.isOpen()) {
        return;
    }
    if (out.isStandardOutput()) {
        unlock();
    } else {
        removeIfEmpty();
    }
}

void GrowingFile::openStandardOutput(const InputFile& input) {
    const FileStatus status = out.status();
    if (outputIsTerminal()) {
        out.refuse("is a terminal; give the trace a name with -o");
    }
    refuseInput(status, input);
    regular = status.kind == FileStatus::Kind::REGULAR;
    lock();
}

void GrowingFile::openNamed(ExistingFile existing, const InputFile& input) {
    const std::optional<FileStatus> status = fileStatus(file);
    if (!status) {
        create();
        return;
    }
    if (status->kind == FileStatus::Kind::FOLDER) {
        out.refuse("is a directory");
    }
    refuseInput(*status, input);
    regular = status->kind == FileStatus::Kind::REGULAR;
    if ((regular || status->kind == FileStatus::Kind::BLOCK_DEVICE) &&
        existing == ExistingFile::REFUSE) {
        out.refuse("exists; --append goes on behind it, --force replaces it");
    }
    appends = regular && existing == ExistingFile::APPEND;
    replaces = regular && !appends;
    if (!out.open(file, (appends ? O_RDWR : O_WRONLY) | (regular ? O_APPEND : 0))) {
        const int reason = errno;
        StoppableSource::stopWhenTold();  // a FIFO waits for its reader
        out.refuseFor(reason);
    }
    lock();
}

void GrowingFile::create() {
    if (!out.open(file, O_WRONLY | O_CREAT | O_EXCL | O_APPEND)) {
        if (errno == EEXIST) {
            out.refuse("is a link that leads nowhere");
        }
        out.refuseFor(errno);
    }
    created = true;
    regular = true;
    nameIsSafe = false;
    lock();
}

// A serial line is no place for a trace of what it sends.
void GrowingFile::refuseInput(const FileStatus& status, const InputFile& input) const {
    if (isOneOf(status, {input.identity()}) ||
        (isatty(input.descriptor()) != 0 && status.isSameFile(input.identity()))) {
        out.refuse("is the input itself");
    }
}

void GrowingFile::lock() const {
    if (regular && !lockFile(out.descriptor())) {
        out.refuse("is being recorded by another program");
    }
}

// Others have standard output open, too.
void GrowingFile::unlock() const {
    if (regular) {
        unlockFile(out.descriptor());
    }
}

size_t GrowingFile::write(std::string_view bytes) {
    if (replaces && ftruncate(out.descriptor(), 0) != 0) {
        return 0;
    }
    replaces = false;
    if (!regular) {
        return writeAll(out.descriptor(), bytes);
    }
    noteCut();
    size_t done = 0;
    while (done < bytes.size()) {
        const size_t count = writeSome(out.descriptor(), bytes.substr(done));
        if (count == 0) {
            break;
        }
        const int reason = errno;
        const auto end = static_cast<uint64_t>(lseek(out.descriptor(), 0, SEEK_CUR));
        stretch = (written != 0 && end - count == ownEnd ? stretch : 0) + count;
        ownEnd = end;
        written += count;
        done += count;
        errno = reason;
    }
    return done;
}

// A file that another program made shorter goes on at its new end.
void GrowingFile::noteCut() {
    const uint64_t size = fileStatus(out.descriptor()).value_or(FileStatus()).size;
    if (written == 0 || size >= ownEnd) {
        return;
    }
    const uint64_t gone = std::min(ownEnd - size, written);
    lost += gone;
    written -= gone;
    ownEnd = size;
    stretch -= std::min(stretch, gone);
    lseek(out.descriptor(), static_cast<off_t>(size), SEEK_SET);
}

void GrowingFile::takeBack(size_t count) {
    if (!regular || count == 0 || count > stretch ||
        fileStatus(out.descriptor()).value_or(FileStatus()).size != ownEnd) {
        return;
    }
    const auto begin = static_cast<off_t>(ownEnd - count);
    if (ftruncate(out.descriptor(), begin) == 0) {
        lseek(out.descriptor(), begin, SEEK_SET);
        ownEnd -= count;
        stretch -= count;
        written -= count;
    }
}

std::string GrowingFile::moveAside(uint64_t begin, uint64_t end) {
    std::string path = file + ".torn";
    Sink copy(path);
    for (int number = 2; !copy.open(path, O_WRONLY | O_CREAT | O_EXCL); ++number) {
        if (errno != EEXIST) {
            out.refuseFor(errno);
        }
        path = fmt::format("{}.torn-{}", file, number);
    }
    if (!copyRange(out.descriptor(), begin, end, copy.descriptor()) ||
        ftruncate(out.descriptor(), static_cast<off_t>(begin)) != 0) {
        const int reason = errno;
        unlink(path.c_str());
        out.refuseFor(reason);
    }
    return path;
}

void GrowingFile::synchronise() {
    out.synchronise();
    if (!nameIsSafe && !synchroniseFolder(file)) {
        out.failFor(errno);
    }
    nameIsSafe = true;
}

bool GrowingFile::isRemoved() const {
    struct stat status = {};
    return fstat(out.descriptor(), &status) == 0 && status.st_nlink == 0;
}

void GrowingFile::requireName() const {
    if (hasName && isRemoved()) {
        throw DataError(fmt::format("{}: was removed while it was recorded", out.name()));
    }
}

void GrowingFile::close() {
    if (regular) {
        noteCut();
    }
    requireName();
    removeIfEmpty();
    if (out.isStandardOutput()) {
        unlock();
    }
    if (!out.close()) {
        out.failFor(errno);
    }
}

// Unless another file bears the name by now.
void GrowingFile::removeIfEmpty() const {
    const std::optional<FileStatus> opened = fileStatus(out.descriptor());
    const std::optional<FileStatus> named = fileStatus(file);
    if (created && opened && opened->size == 0 && named && named->isSameFile(*opened)) {
        unlink(file.c_str());
    }
}

}  // namespace vextrace::tools
