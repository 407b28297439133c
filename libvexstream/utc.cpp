#include "libvexstream/utc.h"

#include "libvexstream/internal/digits.h"
#include "libvexstream/sentence.h"

namespace vextrace {

namespace {

constexpr uint64_t NANOSECONDS_PER_SECOND = 1'000'000'000;
constexpr uint64_t NANOSECONDS_PER_DAY = 86'400 * NANOSECONDS_PER_SECOND;

constexpr size_t DATE_SIZE = 10;  // YYYY-MM-DD
constexpr size_t TIME_SIZE = 8;   // hh:mm:ss

// The last day that a time stamp can hold whole.
constexpr std::chrono::sys_days LAST_DAY{
    std::chrono::year_month_day(std::chrono::year(2554), std::chrono::July, std::chrono::day(20))};

bool fits(std::chrono::sys_days day) {
    return day >= std::chrono::sys_days() && day <= LAST_DAY;
}

// Writes a number of two digits and what stands behind it; gives the place behind that.
char* writePair(char* place, unsigned number, char behind) {
    place[0] = static_cast<char>('0' + number / 10);
    place[1] = static_cast<char>('0' + number % 10);
    place[2] = behind;
    return place + 3;
}

// With its point, without zeros at the end, and Z.
char* writeFraction(char* place, uint64_t nanoseconds) {
    constexpr size_t DIGITS = 9;
    place[0] = '.';
    for (size_t i = DIGITS; i > 0; --i) {
        place[i] = static_cast<char>('0' + nanoseconds % 10);
        nanoseconds /= 10;
    }
    place += DIGITS;
    while (*place == '0') {
        --place;
    }
    place[1] = 'Z';
    return place + 2;
}

std::optional<TimeOfDay> parseTime(std::string_view text) {
    std::string digits(text);
    if (digits.size() == TIME_SIZE - 3) {
        digits += ":00";
    }
    if (digits.size() < TIME_SIZE || digits[2] != ':' || digits[5] != ':') {
        return std::nullopt;
    }
    digits.erase(5, 1).erase(2, 1);
    return TimeOfDay::parse(digits);
}

}  // namespace

std::string utcText(timeStamp_t stamp) {
    char text[LONGEST_UTC];
    return {text, writeUtc(text, stamp)};
}

char* writeUtc(char* dest, timeStamp_t stamp) {
    const std::chrono::year_month_day date{
        std::chrono::sys_days(std::chrono::days(stamp / NANOSECONDS_PER_DAY))};
    const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
    const auto seconds = static_cast<unsigned>(stamp / NANOSECONDS_PER_SECOND % 86'400);
    char* end = writePair(dest, year / 100, '\0') - 1;  // the next two digits follow
    end = writePair(end, year % 100, '-');
    end = writePair(end, static_cast<unsigned>(date.month()), '-');
    end = writePair(end, static_cast<unsigned>(date.day()), 'T');
    end = writePair(end, seconds / 3600, ':');
    end = writePair(end, seconds / 60 % 60, ':');
    end = writePair(end, seconds % 60, 'Z');
    if (const uint64_t fraction = stamp % NANOSECONDS_PER_SECOND; fraction != 0) {
        end = writeFraction(end - 1, fraction);
    }
    return end;
}

std::optional<timeStamp_t> parseUtc(std::string_view text) {
    const std::optional<std::chrono::sys_days> day = parseDate(text.substr(0, DATE_SIZE));
    if (!day || text.size() == DATE_SIZE) {
        return day ? std::optional(stampOf(*day, 0)) : std::nullopt;
    }
    if (text[DATE_SIZE] != 'T' && text[DATE_SIZE] != ' ') {
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
    return fits(days) ? std::optional(days) : std::nullopt;
}

timeStamp_t stampOf(std::chrono::sys_days day, uint64_t nanosecondsOfDay) {
    const auto days = static_cast<uint64_t>(day.time_since_epoch().count());
    return (fits(day) ? days * NANOSECONDS_PER_DAY : 0) + nanosecondsOfDay;
}

}  // namespace vextrace
