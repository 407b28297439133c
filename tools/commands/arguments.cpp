#include "tools/commands/arguments.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>

#include "libvexstream/utc.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

timeStamp_t timeArgument(const char* option, const std::string& text) {
    const std::optional<timeStamp_t> stamp = parseUtc(text);
    if (!stamp) {
        throw UsageError(
            fmt::format("{}: {} is no time such as 2026-11-21T12:35:19.5Z", option, escaped(text)));
    }
    return *stamp;
}

}  // namespace

Span spanArgument(const std::string& from, const std::string& until) {
    Span span;
    if (!from.empty()) {
        span.from = timeArgument("--from", from);
    }
    if (!until.empty()) {
        span.until = timeArgument("--until", until);
    }
    if (span.from > span.until) {
        throw UsageError("--from: is later than --until");
    }
    return span;
}

timeStamp_t gapArgument(double seconds, bool mayBeZero) {
    constexpr double MOST = 1e9;  // some thirty years
    if (!(seconds > 0 || (mayBeZero && seconds == 0))) {
        throw UsageError(mayBeZero ? "--gap: takes a number of seconds that is not negative"
                                   : "--gap: takes a number of seconds greater than 0");
    }
    return static_cast<timeStamp_t>(std::min(seconds, MOST) * 1e9);
}

std::chrono::sys_days dateArgument(const std::string& text) {
    const auto date = text.empty() ? std::chrono::sys_days() : parseDate(text);
    if (!date) {
        throw UsageError(fmt::format("--date: {} is no day, YYYY-MM-DD", escaped(text)));
    }
    return *date;
}

}  // namespace vextrace::tools
