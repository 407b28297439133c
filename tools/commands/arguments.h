#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "libvextrace/MessageBase.h"

namespace vextrace::tools {

// What several commands do with what was given to them.

/// The value of an option that takes a time. \throws UsageError when the text is none
timeStamp_t timeArgument(const char* option, const std::string& text);

/// Nanoseconds of an option that takes seconds. \throws UsageError unless they are greater than 0
timeStamp_t secondsArgument(const char* option, double seconds);

/// What stat says of the inputs. They are looked at before anything is written, and without opening
/// them: there may be more inputs than files that can be open, and a FIFO is opened once.
/// \throws UsageError when one cannot be read, or is a directory
std::vector<struct stat> inputStatuses(const std::vector<std::string>& paths);

/// Bytes of all inputs; nothing unless all are regular files.
std::optional<uint64_t> totalSize(const std::vector<struct stat>& inputs);

}  // namespace vextrace::tools
