#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "libvexstream/visibility.h"
#include "libvextrace/MessageBase.h"

namespace vextrace {

/// The time stamp, nanoseconds since 1970 in UTC, as 2026-11-21T12:35:19Z, with as many digits of
/// the fraction as it has. Years beyond 9999 cannot occur in 64 bits.
VEXSTREAM_EXPORT std::string utcText(timeStamp_t stamp);

/// What utcText() gives at most.
constexpr size_t LONGEST_UTC = std::string_view("2554-07-21T23:34:33.709551615Z").size();

/// Writes the same where there is room for it, without a NUL; for many of them.
/// \return behind the last character
VEXSTREAM_EXPORT char* writeUtc(char* dest, timeStamp_t stamp);

/// A time that a user gave: YYYY-MM-DD, or YYYY-MM-DDThh:mm or YYYY-MM-DDThh:mm:ss, with a fraction
/// or none, Z or none; the T may be a blank.
VEXSTREAM_EXPORT std::optional<timeStamp_t> parseUtc(std::string_view text);

/// A day that a user gave: YYYY-MM-DD, of those that calendarDay() has.
VEXSTREAM_EXPORT std::optional<std::chrono::sys_days> parseDate(std::string_view text);

/// A day of the calendar, from 1970-01-01 to 2554-07-20, the last that a time stamp can hold whole.
/// Nothing for other days, and for numbers that are no day.
VEXSTREAM_EXPORT std::optional<std::chrono::sys_days> calendarDay(unsigned year, unsigned month,
                                                                  unsigned day);

/// Whether a time stamp is more than a time of day. A recorder that knows no date counts from
/// 1970-01-01, so dates begin at 1971-01-01T00:00:00Z.
constexpr bool hasDate(timeStamp_t stamp) {
    return stamp >= timeStamp_t{365} * 86'400 * 1'000'000'000;
}

/// The time stamp of a time of day; in a leap second that is one of the next day. On a day that
/// calendarDay() does not have it is one without a date, of 1970-01-01.
VEXSTREAM_EXPORT timeStamp_t stampOf(std::chrono::sys_days day, uint64_t nanosecondsOfDay);

}  // namespace vextrace
