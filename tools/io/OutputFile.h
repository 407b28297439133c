#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/ByteSource.h"
#include "tools/io/Sink.h"
#include "tools/io/TextBuffer.h"
#include "tools/io/signals.h"

namespace vextrace::tools {

/// Buffered output that appears under its name only when it is complete: a regular file is written
/// beside its place and, when it is on the device, renamed by commit(). "-" is standard output;
/// devices and FIFOs are written directly. Where SIGINT, SIGTERM or SIGHUP end the program, nothing
/// is left behind, either.
///
/// There may be one at a time.
class OutputFile {
public:
    /// \param path    "-" is standard output
    /// \param force   whether an existing file may be replaced
    /// \param inputs  the files that must not be overwritten, by whatever name
    /// \throws UsageError when the file exists and \p force is false, is one of \p inputs, is a
    ///         directory, is being recorded, or cannot be written
    OutputFile(const std::string& path, bool force, const std::vector<FileStatus>& inputs);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Without commit() nothing is left behind.
    ~OutputFile();

    /// \throws DataError when the device is full or fails, BrokenPipe when nobody reads any more
    void write(std::string_view text) {
        buffer += text;
        flushWhenFull();
    }

    /// What is to be written, to be appended to in place; flushWhenFull() is to be called then.
    TextBuffer& pending() { return buffer; }

    /// \throws as write() does
    void flushWhenFull() {
        if (buffer.size() >= BUFFER_SIZE) {
            flush();
        }
    }

    /// Whether all that was written lies in a file that has no name yet, and can be taken back.
    bool canTakeBack() const { return !target.empty(); }

    /// Reads what was written, from its beginning; while it is written anew, what was not written
    /// over yet. For use as long as the file is. \throws as write() does
    std::unique_ptr<ByteSource> written();

    /// What is written next takes the place of what was written from there on.
    /// \throws as write() does
    void goBackTo(uint64_t offset);

    /// Takes back what was written behind this place. \throws as write() does
    void endHere();

    /// The name appears, or standard output is flushed. \throws as write() does; UsageError when
    /// the file that has the name is being recorded
    void commit();

private:
    static constexpr size_t BUFFER_SIZE = size_t{64} * 1024;

    using Inputs = std::vector<FileStatus>;
    void refuseInputs(const FileStatus& existing, const Inputs& inputs) const;
    void refuseRecorded() const;
    void openExisting(const FileStatus& existing, bool force, const Inputs& inputs);
    void openNew(bool force, int reason);
    void openTemporary();
    void flush();
    bool name() const;

    Sink sink;
    std::string target;     ///< empty where nothing is renamed
    std::string temporary;  ///< where the bytes of the target are until commit()
    std::optional<RemoveOnSignal> removeTemporary;
    bool replace = false;  ///< whether the target may exist when it is renamed
    TextBuffer buffer;
};

}  // namespace vextrace::tools
