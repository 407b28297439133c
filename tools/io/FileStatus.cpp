#include "tools/io/FileStatus.h"

#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

FileStatus::Kind kindOf(mode_t mode) {
    return S_ISREG(mode)    ? FileStatus::Kind::REGULAR
           : S_ISDIR(mode)  ? FileStatus::Kind::FOLDER
           : S_ISBLK(mode)  ? FileStatus::Kind::BLOCK_DEVICE
           : S_ISFIFO(mode) ? FileStatus::Kind::FIFO
                            : FileStatus::Kind::OTHER;
}

FileStatus statusOf(const struct stat& file) {
    return {kindOf(file.st_mode), static_cast<uint64_t>(file.st_size), file.st_dev, file.st_ino,
            file.st_mode & 0777U};
}

}  // namespace

std::optional<FileStatus> fileStatus(const std::string& path) {
    if (path == "-") {
        return fileStatus(STDIN_FILENO);
    }
    struct stat file = {};
    return stat(path.c_str(), &file) == 0 ? std::optional(statusOf(file)) : std::nullopt;
}

std::optional<FileStatus> fileStatus(int descriptor) {
    struct stat file = {};
    return fstat(descriptor, &file) == 0 ? std::optional(statusOf(file)) : std::nullopt;
}

std::vector<FileStatus> inputStatuses(const std::vector<std::string>& paths) {
    std::vector<FileStatus> statuses;
    for (const std::string& path : paths) {
        const std::optional<FileStatus> status = fileStatus(path);
        if (!status || (path != "-" && access(path.c_str(), R_OK) != 0)) {
            throw UsageError(
                fmt::format("{}: cannot be read: {}", shownName(path), std::strerror(errno)));
        }
        if (status->kind == FileStatus::Kind::FOLDER) {
            throw UsageError(fmt::format("{}: is a directory", shownName(path)));
        }
        statuses.push_back(*status);
    }
    return statuses;
}

std::vector<FileStatus> statusesThatExist(const std::vector<std::string>& paths) {
    std::vector<FileStatus> statuses;
    for (const std::string& path : paths) {
        if (const std::optional<FileStatus> status = fileStatus(path)) {
            statuses.push_back(*status);
        }
    }
    return statuses;
}

std::optional<uint64_t> totalSize(const std::vector<FileStatus>& files) {
    uint64_t total = 0;
    for (const FileStatus& file : files) {
        if (file.kind != FileStatus::Kind::REGULAR) {
            return std::nullopt;
        }
        total += file.size;
    }
    return total;
}

}  // namespace vextrace::tools
