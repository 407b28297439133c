#pragma once

#include <string>

namespace vextrace::tools {

/// Locks an open file against other recorders, as long as it is open. Not every file system has
/// locks; without them there is no harm in going on.
/// \return false where another program has it locked
bool lockFile(int descriptor);

/// Lets others lock it while it is open.
void unlockFile(int descriptor);

/// Whether another program records to the file that exists under this name.
bool isRecorded(const std::string& path);

}  // namespace vextrace::tools
