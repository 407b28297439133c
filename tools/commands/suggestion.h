#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/commands/commandTable.h"

namespace vextrace::tools {

/// What is wrong with a command line that was refused, where a command or an option in it does not
/// exist, and the nearest name that does: "--fixs: no option of show; did you mean --fix?".
/// \param arguments  in their order, without the program's name
/// \return nothing where all names exist
std::optional<std::string> unknownName(const std::vector<CommandEntry>& commands,
                                       const std::vector<std::string>& arguments);

/// The same, where an option that takes one value is given twice.
std::optional<std::string> doubledOption(const std::vector<CommandEntry>& commands,
                                         const std::vector<std::string>& arguments);

/// The same, where the value of an option is empty, as that of a variable of the shell may be. No
/// other argument must take its place.
std::optional<std::string> emptyOption(const std::vector<CommandEntry>& commands,
                                       const std::vector<std::string>& arguments);

}  // namespace vextrace::tools
