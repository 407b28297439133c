#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "libvexstream/ByteSource.h"
#include "tools/io/FileStatus.h"

namespace vextrace::tools {

/// An input of bytes: a file, a FIFO, a device, or standard input. Closed at the end, standard
/// input aside.
class InputFile : public ByteSource {
public:
    /// \param path  "-" is standard input
    /// \throws UsageError when it cannot be opened, or is a directory
    explicit InputFile(const std::string& path);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() override;

    /// Reads what is there, at most \p room bytes; waits where nothing is. 0 is the end of the
    /// file; more may be read behind it, should the file grow. \throws ReadError, which names the
    /// file, the byte and the reason
    size_t read(uint8_t* dest, size_t room) override;

    /// Goes back over the last \p count bytes that were read. Only regular files can.
    /// \throws DataError where the system refuses
    bool goBack(size_t count) override;

    /// For waiting.
    int descriptor() const { return fd; }

    /// What the system said when it was opened; identifies the file.
    const FileStatus& identity() const { return status; }

    /// Bytes of a regular file; nothing for others.
    std::optional<uint64_t> size() const;

    /// The name for messages to people.
    const std::string& name() const { return shown; }

private:
    int fd;
    FileStatus status;
    uint64_t position = 0;
    std::string shown;
};

}  // namespace vextrace::tools
