#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vextrace::tools {

/// What the system says of a file.
struct FileStatus {
    enum class Kind {
        REGULAR,
        FOLDER,
        BLOCK_DEVICE,
        FIFO,
        OTHER  ///< terminals, sockets, other devices
    };

    Kind kind = Kind::OTHER;
    uint64_t size = 0;    ///< bytes of a regular file
    uint64_t device = 0;  ///< this and the number are the same for all names of a file
    uint64_t number = 0;
    unsigned permissions = 0;  ///< as chmod takes them

    bool isSameFile(const FileStatus& other) const {
        return device == other.device && number == other.number;
    }
};

/// Nothing where there is no such file; errno has the reason. "-" is standard input.
std::optional<FileStatus> fileStatus(const std::string& path);

/// The same of an open file.
std::optional<FileStatus> fileStatus(int descriptor);

/// The same of inputs. They are looked at before anything is written, and without opening them:
/// there may be more inputs than files that can be open, and a FIFO is opened once.
/// \throws UsageError when one cannot be read, or is a directory
std::vector<FileStatus> inputStatuses(const std::vector<std::string>& paths);

/// The same of those inputs that there are.
std::vector<FileStatus> statusesThatExist(const std::vector<std::string>& paths);

/// Bytes of all files; nothing unless all are regular files.
std::optional<uint64_t> totalSize(const std::vector<FileStatus>& files);

}  // namespace vextrace::tools
