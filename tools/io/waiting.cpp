#include "tools/io/waiting.h"

#include <fmt/core.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "tools/io/errors.h"

namespace vextrace::tools {

namespace {

constexpr short NOBODY_READS = POLLERR | POLLHUP | POLLNVAL;

// For poll().
int timeoutOf(std::optional<std::chrono::milliseconds> time) {
    return time ? static_cast<int>(std::max<int64_t>(time->count(), 0)) : -1;
}

}  // namespace

Awaited waitForInput(const InputFile& input, const StopSignals& signals, const Sink& output,
                     std::optional<std::chrono::milliseconds> time) {
    std::array<pollfd, 3> waiting = {{{input.descriptor(), POLLIN, 0},
                                      {signals.descriptor(), POLLIN, 0},
                                      {output.descriptor(), 0, 0}}};
    const int ready = poll(waiting.data(), waiting.size(), timeoutOf(time));
    if (StopSignals::caught() != 0) {
        return Awaited::SIGNAL;
    }
    if (ready > 0 && (waiting[2].revents & NOBODY_READS) != 0) {
        return Awaited::NO_READER;
    }
    return ready > 0 ? Awaited::INPUT : Awaited::TIME;
}

bool hasInput(const InputFile& input) {
    pollfd waiting = {input.descriptor(), POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

bool waitForGrowth(const InputFile& input, uint64_t position) {
    constexpr int MOMENT_MS = 100;
    if (!input.size()) {
        return false;
    }
    const std::optional<FileStatus> status = fileStatus(input.descriptor());
    if (status && status->size < position) {
        throw DataError(fmt::format("{}: became shorter than the {} bytes that were shown",
                                    input.name(), position));
    }
    pollfd output = {STDOUT_FILENO, 0, 0};
    if (poll(&output, 1, MOMENT_MS) > 0 && (output.revents & NOBODY_READS) != 0) {
        throw BrokenPipe();
    }
    return true;
}

}  // namespace vextrace::tools
