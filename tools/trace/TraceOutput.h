#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/EpochBuilder.h"
#include "tools/io/InputFile.h"

namespace vextrace::tools {

/// What becomes of a trace that exists.
enum class ExistingTrace {
    REFUSE,
    APPEND,  ///< goes on; a torn message at its end is moved to a file beside it
    REPLACE  ///< is emptied when the first epoch is written
};

/// A trace that is being recorded. It lies under its name from the beginning, and each epoch is
/// written with one call, so that a recorder that is killed loses at most the epoch in hand. Where
/// writing fails, what was written of an epoch by half is taken back if the file allows it.
///
/// A regular file is locked, so that no second recorder writes into it.
class TraceOutput {
public:
    struct Counters {
        uint64_t epochs = 0;
        uint64_t messages = 0;
        uint64_t sentences = 0;
        uint64_t bytes = 0;
        uint64_t messagesWithoutDate = 0;
        timeStamp_t first = 0;  ///< stamp of the first epoch that has a date
        timeStamp_t last = 0;   ///< of the last one
    };

    /// \param path      "-" is standard output; devices and FIFOs are written as they are
    /// \param existing  what becomes of a regular file
    /// \param input     must not be the same file, by whatever name
    /// \throws UsageError when the output is the input, exists and must not be changed, is a
    ///         directory, a terminal on standard output, no trace that could go on, or cannot be
    ///         written. Nothing has been changed then.
    TraceOutput(const std::string& path, ExistingTrace existing, const InputFile& input);
    TraceOutput(const TraceOutput&) = delete;
    TraceOutput& operator=(const TraceOutput&) = delete;
    ~TraceOutput();

    /// Makes every call of write() wait until the device has the bytes.
    void setSync(bool on) { sync = on; }

    /// Lets write() keep what it is given until there is enough for a call to be worth its while.
    /// For an input that can be read again, and a regular file; else it changes nothing.
    void setTogether(bool on) { together = on && regular; }

    /// Writes the messages of a part of an epoch.
    /// \throws DataError when the device is full or fails, BrokenPipe when nobody reads any more
    void write(const EpochBuilder::Part& part);

    /// Writes what is kept, and closes. A file that was created and holds nothing is removed.
    /// \throws as write() does
    void close();

    /// What is in the trace by now.
    const Counters& written() const { return count; }

    /// What was done to a trace that goes on; for people, empty where there is nothing to tell.
    const std::string& notice() const { return told; }

    /// The name for messages to people.
    const std::string& name() const { return shown; }

private:
    struct Queued {
        size_t end;  // in the queue
        Counters added;
    };

    void openStandardOutput(const InputFile& input);
    void openFile(ExistingTrace existing, const InputFile& input);
    void create();
    void lock() const;
    void continueTrace();
    void moveAside(uint64_t begin, uint64_t behind);
    void flush();
    size_t writeQueue();
    void countWhole(size_t done);
    void synchronise() const;
    void release();
    void removeIfEmpty() const;
    [[noreturn]] void refuse(std::string_view reason) const;
    [[noreturn]] void refuseForErrno() const;
    [[noreturn]] void failFor(int reason) const;

    int fd = -1;
    std::string file;
    std::string shown;
    std::string told;
    bool regular = false;
    bool created = false;
    bool replaces = false;  // what was there is there still
    bool sync = false;
    bool together = false;
    std::optional<uint64_t> end;  // of the last whole epoch, where the file can be cut off there

    std::vector<uint8_t> queue;
    std::vector<Queued> parts;
    Counters count;
};

}  // namespace vextrace::tools
