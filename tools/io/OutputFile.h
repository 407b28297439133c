#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/InputFile.h"

namespace vextools {

/// Buffered output that appears under its name only when it is complete: a regular file is written
/// beside its place and renamed by commit(). "-" is standard output; devices and FIFOs are written
/// directly.
class OutputFile {
public:
    /// \param path    "-" is standard output
    /// \param force   whether an existing file may be replaced
    /// \param inputs  files that must not be overwritten, by whatever name
    /// \throws UsageError when the file exists and \p force is false, is one of \p inputs, is a
    ///         directory, or cannot be written
    OutputFile(const std::string& path, bool force, const std::vector<const InputFile*>& inputs);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Without commit() nothing is left behind.
    ~OutputFile();

    /// \throws DataError when the device is full or fails, BrokenPipe when nobody reads any more
    void write(std::string_view text);

    /// The name appears, or standard output is flushed.
    void commit();

private:
    void flush();

    int fd = -1;
    std::string target;  ///< empty where nothing is renamed
    std::string temporary;
    std::string shown;
    std::string buffer;
};

}  // namespace vextools
