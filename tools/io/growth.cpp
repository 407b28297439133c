#include "tools/io/growth.h"

#include <fmt/core.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "tools/io/errors.h"

namespace vextrace::tools {

namespace {

constexpr int MOMENT_MS = 100;

std::atomic<int> statusOnInterrupt{STATUS_OK};
static_assert(std::atomic<int>::is_always_lock_free);

}  // namespace

bool waitForGrowth(const InputFile& input, uint64_t position) {
    if (!input.size()) {
        return false;
    }
    const std::optional<FileStatus> status = fileStatus(input.descriptor());
    if (status && status->size < position) {
        throw DataError(fmt::format("{}: became shorter than the {} bytes that were shown",
                                    input.name(), position));
    }
    pollfd output = {STDOUT_FILENO, 0, 0};
    if (poll(&output, 1, MOMENT_MS) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0) {
        throw BrokenPipe();
    }
    return true;
}

void endQuietlyOnInterrupt() {
    struct sigaction action = {};
    action.sa_handler = [](int) { _exit(statusOnInterrupt); };
    sigaction(SIGINT, &action, nullptr);
}

void setStatusOnInterrupt(Status status) {
    statusOnInterrupt = status;
}

}  // namespace vextrace::tools
