#pragma once

#include <cstdint>

#include "tools/io/InputFile.h"
#include "tools/io/errors.h"

namespace vextrace::tools {

/// Waits a moment for a file to grow. Says whether to look again; false where the input is no file
/// that could grow.
///
/// \param position  bytes of the file that were used
/// \throws DataError when the file has become shorter than that, BrokenPipe when nobody reads
///         standard output any more
bool waitForGrowth(const InputFile& input, uint64_t position);

/// From now on SIGINT ends the program at once and quietly, with status 0 or the one that was set.
/// For commands that never end by themselves.
void endQuietlyOnInterrupt();
void setStatusOnInterrupt(Status status);

}  // namespace vextrace::tools
