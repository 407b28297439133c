#include "tools/nmea/utc.h"

#include <fmt/format.h>

#include "tools/nmea/digits.h"
#include "tools/nmea/sentence.h"

namespace vextools {

namespace {

constexpr uint64_t NANOSECONDS_PER_DAY = 86'400'000'000'000;

constexpr size_t DATE_SIZE = 10;  // YYYY-MM-DD
constexpr size_t TIME_SIZE = 8;   // hh:mm:ss

// The last day that a time stamp can hold whole.
constexpr std::chrono::sys_days LAST_DAY{
    std::chrono::year_month_day(std::chrono::year(2554), std::chrono::July, std::chrono::day(20))};

std::string fractionText(uint64_t nanoseconds) {
    const std::string text = fmt::format(".{:09}", nanoseconds);
    return nanoseconds == 0 ? "" : text.substr(0, text.find_last_not_of('0') + 1);
}

std::optional<TimeOfDay> parseTime(std::string_view text) {
    if (text.size() < TIME_SIZE || text[2] != ':' || text[5] != ':') {
        return std::nullopt;
    }
    std::string digits(text);
    digits.erase(5, 1).erase(2, 1);
    return TimeOfDay::parse(digits);
}

}  // namespace

std::string utcText(timeStamp_t stamp) {
    const std::chrono::year_month_day date{
        std::chrono::sys_days(std::chrono::days(stamp / NANOSECONDS_PER_DAY))};
    const std::chrono::hh_mm_ss time{std::chrono::nanoseconds(stamp % NANOSECONDS_PER_DAY)};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}{}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count(),
                       fractionText(stamp % 1'000'000'000));
}

std::optional<timeStamp_t> parseUtc(std::string_view text) {
    const std::optional<std::chrono::sys_days> day = parseDate(text.substr(0, DATE_SIZE));
    if (!day || text.size() == DATE_SIZE) {
        return day ? std::optional(stampOf(*day, 0)) : std::nullopt;
    }
    if (text[DATE_SIZE] != 'T') {
        return std::nullopt;
    }
    std::string_view rest = text.substr(DATE_SIZE + 1);
    if (rest.ends_with('Z')) {
        rest.remove_suffix(1);
    }
    const std::optional<TimeOfDay> time = parseTime(rest);
    return time ? std::optional(stampOf(*day, time->nanoseconds)) : std::nullopt;
}

std::optional<std::chrono::sys_days> parseDate(std::string_view text) {
    if (text.size() != DATE_SIZE || text[4] != '-' || text[7] != '-' ||
        !isDigits(text.substr(0, 4)) || !isDigits(text.substr(5, 2)) ||
        !isDigits(text.substr(8, 2))) {
        return std::nullopt;
    }
    return calendarDay(number(text.substr(0, 4)), number(text.substr(5, 2)),
                       number(text.substr(8, 2)));
}

std::optional<std::chrono::sys_days> calendarDay(unsigned year, unsigned month, unsigned day) {
    if (year > 9999 || month > 12 || day > 31) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(month), std::chrono::day(day));
    if (!date.ok()) {
        return std::nullopt;
    }
    const std::chrono::sys_days days(date);
    if (days < std::chrono::sys_days() || days > LAST_DAY) {
        return std::nullopt;
    }
    return days;
}

timeStamp_t stampOf(std::chrono::sys_days day, uint64_t nanosecondsOfDay) {
    return static_cast<uint64_t>(day.time_since_epoch().count()) * NANOSECONDS_PER_DAY +
           nanosecondsOfDay;
}

}  // namespace vextools
