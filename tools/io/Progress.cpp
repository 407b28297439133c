#include "tools/io/Progress.h"

#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vextrace::tools {

namespace {

constexpr uint64_t BYTES_BETWEEN_LOOKS = uint64_t{64} * 1024;
constexpr uint64_t NEVER = std::numeric_limits<uint64_t>::max();
constexpr std::chrono::milliseconds QUIET_TIME{1000};
constexpr std::chrono::milliseconds TIME_BETWEEN_LINES{200};
constexpr double MEGABYTE = 1e6;

}  // namespace

Progress::Progress(std::optional<uint64_t> bytes)
    : Progress(bytes, isatty(STDERR_FILENO) != 0 ? STDERR_FILENO : -1, &Clock::now) {}

Progress::Progress(std::optional<uint64_t> bytes, int where, Clock::time_point (*time)())
    : total(bytes), line(where), now(time), begin(now()), lastShown(begin) {
    if (!line.isShown()) {
        nextLook = NEVER;
    }
}

void Progress::look(uint64_t done) {
    nextLook = done + BYTES_BETWEEN_LOOKS;
    const Clock::time_point time = now();
    if (time - begin > QUIET_TIME && time - lastShown >= TIME_BETWEEN_LINES) {
        lastShown = time;
        line.show(progressText(done, total, std::chrono::duration<double>(time - begin).count()));
    }
}

std::string progressText(uint64_t done, std::optional<uint64_t> total, double seconds) {
    const double rate = static_cast<double>(done) / seconds;
    const std::string speed = fmt::format("{:.1f} MB/s", rate / MEGABYTE);
    if (!total || *total == 0 || rate == 0) {
        return fmt::format("{:.0f} MB, {}", static_cast<double>(done) / MEGABYTE, speed);
    }
    // A file may have grown since it was asked for its size.
    const uint64_t whole = std::max(*total, done);
    const auto left = std::llround(static_cast<double>(whole - done) / rate);
    return fmt::format("{} %, {}, {}:{:02} left", done * 100 / whole, speed, left / 60, left % 60);
}

}  // namespace vextrace::tools
