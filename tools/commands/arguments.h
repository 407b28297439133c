#pragma once

#include <string>

#include "libvextrace/MessageBase.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

// The values of options that several commands have.

/// Of --from and --until, where they were given. \throws UsageError when one is no time, or the
/// first is later than the other
Span spanArgument(const std::string& from, const std::string& until);

/// Nanoseconds of an option that takes seconds. \throws UsageError unless they are greater than 0
timeStamp_t secondsArgument(const char* option, double seconds);

}  // namespace vextrace::tools
