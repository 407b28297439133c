#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "libvextrace/MessageBase.h"

namespace vextools {

/// The time stamp, nanoseconds since 1970 in UTC, as 2026-11-21T12:35:19Z, with as many digits of
/// the fraction as it has. Years beyond 9999 cannot occur in 64 bits.
std::string utcText(timeStamp_t stamp);

/// A time that a user gave: YYYY-MM-DD, or YYYY-MM-DDThh:mm:ss with a fraction or none, Z or none.
std::optional<timeStamp_t> parseUtc(std::string_view text);

/// A day that a user gave: YYYY-MM-DD, not before 1970.
std::optional<std::chrono::sys_days> parseDate(std::string_view text);

}  // namespace vextools
