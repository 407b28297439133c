#pragma once

#include <string_view>

namespace vextrace::tools {

/// Makes sure that no file takes the place of a standard stream that the program was started
/// without: messages would be written into it. Reading and writing such a stream go on failing.
void holdStandardStreams();

/// From now on a write to a pipe that nobody reads, or to a file that may not grow, ends nothing:
/// it says so.
void keepFailingWrites();

/// Whether people look at standard output.
bool outputIsTerminal();

/// Writes a line to standard error: "vextrace: " and the text. Where even that fails, the exit
/// status still tells.
void tell(std::string_view text);

/// Writes whole lines to standard error, as another process told them.
void tellLines(std::string_view lines);

}  // namespace vextrace::tools
