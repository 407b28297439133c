#include "tools/commands/arguments.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "libvexstream/utc.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

timeStamp_t timeArgument(const char* option, const std::string& text) {
    const std::optional<timeStamp_t> stamp = parseUtc(text);
    if (!stamp) {
        throw UsageError(
            fmt::format("{}: {} is no time such as 2026-11-21T12:35:19.5Z", option, escaped(text)));
    }
    return *stamp;
}

timeStamp_t secondsArgument(const char* option, double seconds) {
    constexpr double MOST = 1e9;  // some thirty years
    if (!(seconds > 0)) {
        throw UsageError(fmt::format("{}: takes a number of seconds greater than 0", option));
    }
    return static_cast<timeStamp_t>(std::min(seconds, MOST) * 1e9);
}

std::vector<struct stat> inputStatuses(const std::vector<std::string>& paths) {
    std::vector<struct stat> statuses(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        const bool isThere = paths[i] == "-" ? fstat(STDIN_FILENO, &statuses[i]) == 0
                                             : stat(paths[i].c_str(), &statuses[i]) == 0 &&
                                                   access(paths[i].c_str(), R_OK) == 0;
        if (!isThere) {
            throw UsageError(
                fmt::format("{}: cannot be read: {}", shownName(paths[i]), std::strerror(errno)));
        }
        if (S_ISDIR(statuses[i].st_mode)) {
            throw UsageError(fmt::format("{}: is a directory", shownName(paths[i])));
        }
    }
    return statuses;
}

std::optional<uint64_t> totalSize(const std::vector<struct stat>& inputs) {
    uint64_t total = 0;
    for (const struct stat& input : inputs) {
        if (!S_ISREG(input.st_mode)) {
            return std::nullopt;
        }
        total += static_cast<uint64_t>(input.st_size);
    }
    return total;
}

}  // namespace vextrace::tools
