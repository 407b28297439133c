#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "tools/io/InputFile.h"
#include "tools/io/Sink.h"
#include "tools/io/signals.h"

namespace vextrace::tools {

/// What ended a wait.
enum class Awaited {
    INPUT,      ///< there are bytes, or the input has ended
    SIGNAL,     ///< has come; whatever else there is
    NO_READER,  ///< nobody reads the output any more
    TIME        ///< is over
};

/// Waits for the first of these; without a time for the others.
Awaited waitForInput(const InputFile& input, const StopSignals& signals, const Sink& output,
                     std::optional<std::chrono::milliseconds> time);

/// Whether reading would not have to wait.
bool hasInput(const InputFile& input);

/// Waits a moment for a file to grow. Says whether to look again; false where the input is no file
/// that could grow.
///
/// \param position  bytes of the file that were used
/// \throws DataError when the file has become shorter than that, BrokenPipe when nobody reads
///         standard output any more
bool waitForGrowth(const InputFile& input, uint64_t position);

}  // namespace vextrace::tools
