#include "utc.h"

#include <algorithm>

namespace {

constexpr uint64_t NANOSECONDS = 1'000'000'000;
constexpr uint64_t SECONDS_PER_DAY = 86400;

bool allDigits(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

unsigned twoDigits(const std::string& text, size_t pos) {
    return static_cast<unsigned>(text[pos] - '0') * 10 + static_cast<unsigned>(text[pos + 1] - '0');
}

unsigned daysInMonth(unsigned year, unsigned month) {
    constexpr unsigned DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return DAYS[month - 1] + (month == 2 && year % 4 == 0 ? 1 : 0);  // also right in 2000
}

// Of ddmmyy from 1980 to 2079; empty when it is no date.
std::optional<uint64_t> daysSince1970(const std::string& text) {
    if (text.size() != 6 || !allDigits(text)) {
        return std::nullopt;
    }
    const unsigned day = twoDigits(text, 0);
    const unsigned month = twoDigits(text, 2);
    const unsigned year = twoDigits(text, 4) + (twoDigits(text, 4) < 80 ? 2000 : 1900);
    if (month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month)) {
        return std::nullopt;
    }
    unsigned days = (year - 1970) * 365 + (year - 1969) / 4 + day - 1;
    for (unsigned earlier = 1; earlier < month; ++earlier) {
        days += daysInMonth(year, earlier);
    }
    return days;
}

}  // namespace

std::optional<uint64_t> nanosecondsOfDay(const std::string& text) {
    const size_t point = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(0, point);
    std::string fraction = point < text.size() ? text.substr(point + 1) : "0";
    if (whole.size() != 6 || !allDigits(whole) || !allDigits(fraction)) {
        return std::nullopt;
    }
    const unsigned hour = twoDigits(whole, 0);
    const unsigned minute = twoDigits(whole, 2);
    const unsigned second = twoDigits(whole, 4);
    const unsigned lastSecond = hour == 23 && minute == 59 ? 60 : 59;  // with a leap second
    if (hour > 23 || minute > 59 || second > lastSecond) {
        return std::nullopt;
    }
    fraction.resize(9, '0');
    return (hour * 3600 + minute * 60 + second) * NANOSECONDS + std::stoul(fraction);
}

std::optional<timeStamp_t> utcOf(const GPSTraceMessage::gprmc_t& rmc) {
    const std::optional<uint64_t> days = daysSince1970(rmc.dateUTC);
    const std::optional<uint64_t> time = nanosecondsOfDay(rmc.timeUTC);
    if (!days || !time) {
        return std::nullopt;
    }
    return *days * SECONDS_PER_DAY * NANOSECONDS + *time;
}
