#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/io/FileStatus.h"

namespace vextrace::tools {

/// What a command writes to: standard output, or what bears a name. Closed at the end, standard
/// output aside.
class Sink {
public:
    /// Opens nothing yet. \param path  "-" is standard output
    explicit Sink(const std::string& path);
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    ~Sink();

    bool isStandardOutput() const { return standard; }

    /// \return false, with the reason in errno, where it cannot be opened
    bool open(const std::string& file, int flags);
    bool isOpen() const { return fd >= 0; }

    /// Of standard output, or of the open file.
    /// \throws UsageError where it cannot be written
    FileStatus status() const;

    /// \throws DataError where the device did not take all. There is nothing to wait for with pipes
    ///         and some devices.
    void synchronise() const;

    /// \return false, with the reason in errno, where the device did not take all
    bool close();

    int descriptor() const { return fd; }

    /// The name for messages to people.
    const std::string& name() const { return shown; }

    /// \throws UsageError always
    [[noreturn]] void refuse(std::string_view reason) const;
    [[noreturn]] void refuseFor(int reason) const;

    /// \throws BrokenPipe where nobody reads any more, else DataError
    [[noreturn]] void failFor(int reason) const;

private:
    int fd = -1;
    bool standard;
    std::string shown;
};

/// Whether the file is one of them, and writing it would harm what is read: terminals, /dev/null
/// and sockets may well be read and written at once.
bool isOneOf(const FileStatus& file, const std::vector<FileStatus>& inputs);

/// Waits until the names in the file's folder are on the device.
/// \return false, with the reason in errno
bool synchroniseFolder(const std::string& file);

}  // namespace vextrace::tools
