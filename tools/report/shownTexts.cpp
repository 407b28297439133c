#include "tools/report/shownTexts.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "libvexstream/utc.h"

namespace vextrace::tools {

namespace {

constexpr uint64_t SECOND = 1000000000;
constexpr size_t DATE_SIZE = 10;  // YYYY-MM-DD
constexpr std::string_view UTC = " UTC";

}  // namespace

std::string grouped(uint64_t number) {
    const std::string digits = std::to_string(number);
    std::string result;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) {
            result += ',';
        }
        result += digits[i];
    }
    return result;
}

std::string shownUtc(timeStamp_t stamp) {
    std::string text = utcText(stamp);
    text[DATE_SIZE] = ' ';
    text.pop_back();
    return text.append(UTC);
}

std::string shownSpan(timeStamp_t first, timeStamp_t last) {
    const std::string begin = shownUtc(first);
    const std::string end = shownUtc(last);
    const bool isOneDay = begin.starts_with(end.substr(0, DATE_SIZE));
    return begin.substr(0, begin.size() - UTC.size()) + " to " +
           (isOneDay ? end.substr(DATE_SIZE + 1) : end);
}

std::string shownDuration(uint64_t nanoseconds) {
    const uint64_t seconds = (nanoseconds + SECOND / 2) / SECOND;
    if (nanoseconds < 10 * SECOND) {
        const uint64_t tenths = (nanoseconds + SECOND / 20) / (SECOND / 10);
        return tenths % 10 == 0 ? fmt::format("{} s", tenths / 10)
                                : fmt::format("{}.{} s", tenths / 10, tenths % 10);
    }
    if (seconds < 60) {
        return fmt::format("{} s", seconds);
    }
    if (seconds < 3600) {
        return fmt::format("{} min {:02} s", seconds / 60, seconds % 60);
    }
    const std::string hours =
        fmt::format("{} h {:02} min {:02} s", seconds / 3600 % 24, seconds / 60 % 60, seconds % 60);
    return seconds < 86400 ? hours : fmt::format("{} d {}", seconds / 86400, hours);
}

std::string shownDistance(double metres) {
    if (metres < 999.5) {
        return fmt::format("{:.0f} m", metres);
    }
    if (metres < 99995) {
        return fmt::format("{:.2f} km", metres / 1000);
    }
    return grouped(static_cast<uint64_t>(std::llround(std::min(metres / 1000, 1e18)))) + " km";
}

std::string shownSize(uint64_t bytes) {
    if (bytes < 1000) {
        return fmt::format("{} bytes", bytes);
    }
    const char* const units[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
    const char* const* unit = units;
    auto size = static_cast<double>(bytes) / 1000;
    while (size >= 999.5) {
        size /= 1000;
        ++unit;
    }
    return fmt::format("{:.{}f} {}", size, size < 10 ? 1 : 0, *unit);
}

}  // namespace vextrace::tools
