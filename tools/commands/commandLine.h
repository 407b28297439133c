#pragma once

#include <string>
#include <vector>

namespace vextrace::tools {

/// Runs the command that arguments name.
/// \param given  the arguments, without the program's name in front
/// \return the exit status
/// \throws UsageError where they cannot be understood, and what the command throws
int runCommandLine(const std::vector<std::string>& given);

}  // namespace vextrace::tools
