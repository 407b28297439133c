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

// Writes the number with so many digits; gives the place behind them.
char* writeDigits(char* place, uint64_t number, size_t count) {
    for (size_t i = count; i > 0; --i) {
        place[i - 1] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    return place + count;
}

char* writeDigitsAnd(char* place, uint64_t number, size_t count, char behind) {
    place = writeDigits(place, number, count);
    *place = behind;
    return place + 1;
}

// With its point, without zeros at the end; nothing of a whole second.
char* writeFraction(char* place, uint64_t nanoseconds) {
    if (nanoseconds == 0) {
        return place;
    }
    *place = '.';
    place = writeDigits(place + 1, nanoseconds, 9);
    while (place[-1] == '0') {
        --place;
    }
    return place;
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
    const uint64_t seconds = stamp / NANOSECONDS_PER_SECOND % 86'400;
    char* end = writeDigitsAnd(dest, static_cast<uint64_t>(static_cast<int>(date.year())), 4, '-');
    end = writeDigitsAnd(end, static_cast<unsigned>(date.month()), 2, '-');
    end = writeDigitsAnd(end, static_cast<unsigned>(date.day()), 2, 'T');
    end = writeDigitsAnd(end, seconds / 3600, 2, ':');
    end = writeDigitsAnd(end, seconds / 60 % 60, 2, ':');
    end = writeDigits(end, seconds % 60, 2);
    end = writeFraction(end, stamp % NANOSECONDS_PER_SECOND);
    *end = 'Z';
    return end + 1;
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
