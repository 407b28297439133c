#pragma once

#include <cstdint>
#include <string>

#include "libvextrace/MessageBase.h"

namespace vextrace::tools {

// Numbers as people read them on the page.

/// 6,048,000
std::string grouped(uint64_t number);

/// 2026-11-21 12:35:19.5 UTC
std::string shownUtc(timeStamp_t stamp);

/// 2026-11-21 12:35:19 to 13:40:00 UTC; the second date only where it differs
std::string shownSpan(timeStamp_t first, timeStamp_t last);

/// 2 d 3 h 04 min 05 s, or 4.5 s, or 4 s; leading units that are zero are left out
std::string shownDuration(uint64_t nanoseconds);

/// 350 m, 12.35 km, 20,550 km
std::string shownDistance(double metres);

/// 1.2 MB
std::string shownSize(uint64_t bytes);

}  // namespace vextrace::tools
