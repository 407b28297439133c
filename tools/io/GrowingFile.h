#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/io/InputFile.h"
#include "tools/io/Sink.h"

namespace vextrace::tools {

/// What becomes of a regular file that exists.
enum class ExistingFile {
    REFUSE,
    APPEND,
    REPLACE  ///< is emptied when something is written
};

/// An output that lies under its name from the beginning, and grows piece by piece. Others may
/// append to a regular file, cut it off, or remove it meanwhile; nothing of theirs is taken away.
/// It is locked, so that no second recorder writes into it.
class GrowingFile {
public:
    /// \param path      "-" is standard output; devices and FIFOs are written as they are
    /// \param existing  what becomes of a regular file
    /// \param input     must not be the same file, by whatever name
    /// \throws UsageError when the output is the input, exists and must not be changed, is a
    ///         directory, a terminal on standard output, or cannot be written. Nothing has been
    ///         changed then.
    GrowingFile(const std::string& path, ExistingFile existing, const InputFile& input);
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;
    /// Removes a file that was created and is empty.
    ~GrowingFile();

    bool isRegular() const { return regular; }

    /// Whether bytes stand before those that will be written, which were found under a name.
    bool goesOn() const { return appends; }

    /// Writes behind what is there.
    /// \return how many bytes went out; where that is not all, errno has the reason
    size_t write(std::string_view bytes);

    /// Takes the last bytes back that were written, where they are still the last of the file.
    void takeBack(size_t count);

    /// Cuts the file's end off and puts it into a new file beside it, whose name is made of its
    /// own.
    /// \return the name of that file
    /// \throws UsageError where that fails; nothing has been changed then
    std::string moveAside(uint64_t begin, uint64_t end);

    /// Waits until the device has what was written, and the name. \throws DataError
    void synchronise();

    /// Removes a file that was created and is empty, and closes.
    /// \throws DataError where the device did not take all, or the file was removed
    void close();

    /// \throws DataError where the file bears no name any more
    void requireName() const;

    /// How many bytes of those that were written another program cut off.
    uint64_t cutOff() const { return lost; }

    const Sink& sink() const { return out; }
    const std::string& name() const { return out.name(); }

private:
    void openStandardOutput(const InputFile& input);
    void openNamed(ExistingFile existing, const InputFile& input);
    void create();
    void refuseInput(const FileStatus& status, const InputFile& input) const;
    void lock() const;
    void unlock() const;
    bool isRemoved() const;
    void noteCut();
    void removeIfEmpty() const;

    Sink out;
    std::string file;
    bool regular = false;
    bool created = false;
    bool appends = false;
    bool replaces = false;   // what was there is there still
    bool hasName = false;    // from the beginning
    bool nameIsSafe = true;  // on the device
    uint64_t ownEnd = 0;     // behind the last byte that was written
    uint64_t stretch = 0;    // bytes before that which were written, without others between
    uint64_t written = 0;    // and not cut off
    uint64_t lost = 0;
};

}  // namespace vextrace::tools
