#include "tools/trace/TraceOutput.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>
#include <utility>

#include "libvexstream/TraceReader.h"
#include "libvexstream/internal/soundness.h"
#include "libvexstream/utc.h"
#include "libvextrace/MessageFactory.h"
#include "tools/io/StopSignals.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/io/writeSome.h"

namespace vextrace::tools {

namespace {

constexpr size_t QUEUE_SIZE = size_t{128} * 1024;

// Sockets and terminals may well be read and written at once, and so may /dev/null; a serial line
// is no place for a trace of what it sends.
bool isSame(const struct stat& output, const InputFile& input) {
    const bool matters = S_ISREG(output.st_mode) || S_ISBLK(output.st_mode) ||
                         S_ISFIFO(output.st_mode) || isatty(input.descriptor()) != 0;
    return matters && output.st_dev == input.identity().device &&
           output.st_ino == input.identity().number;
}

// Whether the bytes, in which no message was found, can be the beginning of a GPS message.
bool mayBeTorn(std::span<const uint8_t> bytes) {
    if (bytes.size() < MessageBase::MO_HDRRESERVED) {
        return true;
    }
    return MessageFactory::frame(bytes.data(), bytes.size()).framing == FRAMING_INCOMPLETE &&
           messageId(bytes.data()) == MSGID_GPS;
}

bool writeAll(int fd, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
    return true;
}

// Copies a range of a file to the device of another; false, with the reason in errno, where that
// fails.
bool copyRange(int from, uint64_t begin, uint64_t end, int to) {
    std::vector<char> buffer(size_t{64} * 1024);
    while (begin < end) {
        const size_t wanted = std::min<uint64_t>(buffer.size(), end - begin);
        const ssize_t count = pread(from, buffer.data(), wanted, static_cast<off_t>(begin));
        if (count <= 0 || !writeAll(to, {buffer.data(), static_cast<size_t>(count)})) {
            return false;
        }
        begin += static_cast<uint64_t>(count);
    }
    return fsync(to) == 0;
}

}  // namespace

TraceOutput::TraceOutput(const std::string& path, ExistingTrace existing, const InputFile& input)
    : file(path), shown(escaped(path)) {
    try {
        if (path == "-" || path == "/dev/stdout") {
            openStandardOutput(input);
        } else {
            openFile(existing, input);
        }
    } catch (...) {
        release();
        throw;
    }
}

TraceOutput::~TraceOutput() {
    release();
}

void TraceOutput::openStandardOutput(const InputFile& input) {
    shown = "standard output";
    fd = STDOUT_FILENO;
    struct stat status = {};
    const int flags = fcntl(fd, F_GETFL);
    if (flags < 0 || fstat(fd, &status) != 0) {
        refuseForErrno();
    }
    if ((flags & O_ACCMODE) == O_RDONLY) {
        errno = EBADF;
        refuseForErrno();
    }
    if (isatty(fd) != 0) {
        refuse("is a terminal; give the trace a name with -o");
    }
    if (isSame(status, input)) {
        refuse("is the input itself");
    }
    regular = S_ISREG(status.st_mode);
    const off_t offset = (flags & O_APPEND) != 0 ? status.st_size : lseek(fd, 0, SEEK_CUR);
    if (regular && status.st_size <= offset) {
        end = static_cast<uint64_t>(offset);
    }
}

void TraceOutput::openFile(ExistingTrace existing, const InputFile& input) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) {
        create();
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        refuse("is a directory");
    }
    if (isSame(status, input)) {
        refuse("is the input itself");
    }
    regular = S_ISREG(status.st_mode);
    if ((regular || S_ISBLK(status.st_mode)) && existing == ExistingTrace::REFUSE) {
        refuse("exists; --append goes on behind it, --force replaces it");
    }
    const bool goesOn = regular && existing == ExistingTrace::APPEND;
    fd = open(file.c_str(),
              (goesOn ? O_RDWR : O_WRONLY) | (regular ? O_APPEND : 0) | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        refuseForErrno();
    }
    if (regular) {
        lock();
        end = static_cast<uint64_t>(status.st_size);
        replaces = !goesOn;
    }
    if (goesOn) {
        continueTrace();
    }
}

void TraceOutput::create() {
    fd = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0666);
    if (fd < 0 && errno == EEXIST) {
        refuse("is a link that leads nowhere");
    }
    if (fd < 0) {
        refuseForErrno();
    }
    lock();
    created = true;
    regular = true;
    end = 0;
}

// Not every file system has locks; without them there is no harm in going on.
void TraceOutput::lock() const {
    if (flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        refuse("is being recorded by another program");
    }
}

void TraceOutput::continueTrace() {
    InputFile before(file);
    TraceReader reader(before);
    std::optional<uint64_t> damage;
    bool torn = false;
    for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END; item = reader.next()) {
        const bool isDamage = item.kind == TraceItem::Kind::DAMAGE;
        damage = isDamage ? std::optional(item.offset) : std::nullopt;
        torn = isDamage && mayBeTorn(item.bytes);
    }
    if (!damage) {
        end = reader.position();
        return;
    }
    if (!reader.foundMessage() && !torn) {
        refuse("is no trace that could go on");
    }
    moveAside(*damage, reader.position());
}

void TraceOutput::moveAside(uint64_t begin, uint64_t behind) {
    std::string name = file + ".torn";
    int copy = -1;
    for (int number = 2; copy < 0; ++number) {
        copy = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (copy < 0 && errno != EEXIST) {
            refuseForErrno();
        }
        if (copy < 0) {
            name = fmt::format("{}.torn-{}", file, number);
        }
    }
    const bool moved =
        copyRange(fd, begin, behind, copy) && ftruncate(fd, static_cast<off_t>(begin)) == 0;
    const int reason = errno;
    ::close(copy);
    if (!moved) {
        unlink(name.c_str());
        errno = reason;
        refuseForErrno();
    }
    end = begin;
    told = fmt::format("{}: ended in a torn message; {} from byte {} on moved to {}", shown,
                       counted(behind - begin, "byte"), begin, escaped(name));
}

void TraceOutput::write(const EpochBuilder::Part& part) {
    if (part.messages == 0) {
        return;
    }
    queue.insert(queue.end(), part.bytes.begin(), part.bytes.end());
    parts.push_back({queue.size(),
                     {part.beginsEpoch ? 1U : 0U, part.messages, part.sentences, part.bytes.size(),
                      hasDate(part.stamp) ? 0 : part.messages, part.stamp, part.stamp}});
    if (!together || queue.size() >= QUEUE_SIZE) {
        flush();
    }
}

void TraceOutput::flush() {
    if (queue.empty()) {
        return;
    }
    if (replaces && ftruncate(fd, 0) != 0) {
        failFor(errno);
    }
    end = replaces ? 0 : end;
    replaces = false;
    const size_t done = writeQueue();
    const int reason = errno;
    const bool failed = done < queue.size();
    countWhole(done);
    queue.clear();
    parts.clear();
    if (failed) {
        failFor(reason);
    }
    synchronise();
}

// The number of bytes written. Where that is not all, the reason is in errno.
size_t TraceOutput::writeQueue() {
    size_t done = 0;
    while (done < queue.size()) {
        const ssize_t written = writeSome(fd, queue.data() + done, queue.size() - done);
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else if (errno != EINTR || StopSignals::count() > 1) {
            break;
        }
    }
    return done;
}

// Takes back what lies behind the last part that was written whole.
void TraceOutput::countWhole(size_t done) {
    size_t whole = 0;
    for (const Queued& part : parts) {
        if (part.end > done) {
            break;
        }
        whole = part.end;
        if (hasDate(part.added.first)) {
            count.first = count.first == 0 ? part.added.first : count.first;
            count.last = part.added.last;
        }
        count.messagesWithoutDate += part.added.messagesWithoutDate;
        count.epochs += part.added.epochs;
        count.messages += part.added.messages;
        count.sentences += part.added.sentences;
        count.bytes += part.added.bytes;
    }
    if (end) {
        *end += whole;
    }
    if (end && whole < done) {
        [[maybe_unused]] const int failed = ftruncate(fd, static_cast<off_t>(*end));
    }
}

// Pipes and some devices have nothing to wait for.
void TraceOutput::synchronise() const {
    if (sync && fdatasync(fd) != 0 && errno != EINVAL && errno != EROFS && errno != ENOTSUP) {
        failFor(errno);
    }
}

void TraceOutput::close() {
    flush();
    removeIfEmpty();
    if (fd != STDOUT_FILENO && ::close(std::exchange(fd, -1)) != 0) {
        failFor(errno);
    }
}

void TraceOutput::release() {
    if (fd >= 0 && fd != STDOUT_FILENO) {
        removeIfEmpty();
        ::close(std::exchange(fd, -1));
    }
}

void TraceOutput::removeIfEmpty() const {
    struct stat open = {};
    struct stat named = {};
    if (created && fstat(fd, &open) == 0 && open.st_size == 0 && stat(file.c_str(), &named) == 0 &&
        named.st_dev == open.st_dev && named.st_ino == open.st_ino) {
        unlink(file.c_str());
    }
}

void TraceOutput::refuse(std::string_view reason) const {
    throw UsageError(fmt::format("{}: {}", shown, reason));
}

void TraceOutput::refuseForErrno() const {
    refuse(fmt::format("cannot be written: {}", std::strerror(errno)));
}

void TraceOutput::failFor(int reason) const {
    if (reason == EPIPE) {
        throw BrokenPipe();
    }
    throw DataError(fmt::format("{}: cannot be written: {}", shown, std::strerror(reason)));
}

}  // namespace vextrace::tools
