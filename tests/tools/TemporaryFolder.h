/// \file
/// A folder for tests of files and devices.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// Removed at the end, with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "vextrace-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(folder); }

    std::string path(const std::string& name) const { return (folder / name).string(); }
    std::string path() const { return folder.string(); }

    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    std::string content(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool exists(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(folder / name));
    }

    /// A device of memory (3 is /dev/null, 7 /dev/full), which a mistake of the superuser may
    /// remove, unlike the machine's own. Empty where none can be made; for others than the
    /// superuser the machine's own, which they cannot harm.
    std::string makeDevice(const std::string& name, unsigned number) const {
        if (geteuid() != 0) {
            return "/dev/" + name;
        }
        constexpr unsigned MEMORY = 1;
        const bool isMade = mknod(path(name).c_str(), S_IFCHR | 0600, makedev(MEMORY, number)) == 0;
        const int fd = isMade ? open(path(name).c_str(), O_RDWR | O_CLOEXEC) : -1;
        return fd >= 0 && close(fd) == 0 ? path(name) : "";
    }

    /// A disk that is none: nothing may open it. Empty where none can be made.
    std::string makeBlockDevice(const std::string& name) const {
        constexpr unsigned LOCAL = 240;
        const bool isMade = mknod(path(name).c_str(), S_IFBLK | 0600, makedev(LOCAL, 0)) == 0;
        return isMade ? path(name) : "";
    }

private:
    std::filesystem::path folder;
};
