#pragma once

#include <chrono>
#include <string>

#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

// The values of options that several commands have.

/// Of --from and --until, where they were given. \throws UsageError when one is no time, or the
/// first is later than the other
Span spanArgument(const std::string& from, const std::string& until);

/// Nanoseconds of --gap. \throws UsageError unless the seconds are greater than 0, or may be 0
timeStamp_t gapArgument(double seconds, bool mayBeZero = false);

/// The day of --date; the first one where it was not given. \throws UsageError when it is none
std::chrono::sys_days dateArgument(const std::string& text);

}  // namespace vextrace::tools
