#pragma once

#include <functional>

namespace vextrace::tools {

/// Runs a command, and tells why it ended where it threw.
/// \return the exit status of the program
int outcomeOf(const std::function<int()>& command);

}  // namespace vextrace::tools
