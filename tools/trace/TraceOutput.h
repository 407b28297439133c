#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "libvexstream/EpochBuilder.h"
#include "tools/io/GrowingFile.h"
#include "tools/io/InputFile.h"

namespace vextrace::tools {

/// A trace that is being recorded. It lies under its name from the beginning, and each epoch is
/// written with one call, so that a recorder that is killed loses at most the epoch in hand. Where
/// writing fails, what was written of an epoch by half is taken back if the file allows it.
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
    /// \param existing  what becomes of a regular file; one that goes on may end in a torn message,
    ///                  which is moved to a file beside it
    /// \param input     must not be the same file, by whatever name
    /// \throws UsageError as GrowingFile does, and where the trace is none that could go on;
    ///         Interrupted by a signal while it is read. Nothing has been changed then.
    TraceOutput(const std::string& path, ExistingFile existing, const InputFile& input);

    /// Makes every call of write() wait until the device has the bytes.
    void setSync(bool on) { sync = on; }

    /// Lets write() keep what it is given until there is enough for a call to be worth its while.
    /// For an input that can be read again, and a regular file; else it changes nothing.
    void setTogether(bool on) { together = on && file.isRegular(); }

    /// Writes the messages of a part of an epoch.
    /// \throws DataError when the device is full or fails, or the file was removed, BrokenPipe when
    ///         nobody reads any more
    void write(const EpochBuilder::Part& part);

    /// Writes what is kept, and closes. A file that was created and holds nothing is removed.
    /// \throws as write() does
    void close();

    /// What was written.
    const Counters& written() const { return count; }

    /// Bytes of that which another program cut off.
    uint64_t cutOff() const { return file.cutOff(); }

    /// What was done to a trace that goes on; for people, empty where there is nothing to tell.
    const std::string& notice() const { return told; }

    const Sink& sink() const { return file.sink(); }

    /// The name for messages to people.
    const std::string& name() const { return file.name(); }

private:
    struct Queued {
        size_t end;  // in the queue
        Counters added;
    };

    void continueTrace(const std::string& path);
    void flush();
    size_t countWhole(size_t done);

    GrowingFile file;
    std::string told;
    bool sync = false;
    bool together = false;
    std::vector<uint8_t> queue;
    std::vector<Queued> parts;
    Counters count;
};

}  // namespace vextrace::tools
