#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "tools/io/InputFile.h"

namespace vextrace::tools {

/// How the trace was recorded.
struct RecordingRules {
    bool arrival = false;  ///< stamps are the system's clock, not the receiver's time
    bool live = false;     ///< silence may have ended a message, or a recorder that was stopped
    std::optional<std::chrono::sys_days> date;  ///< of what comes before any date is known
};

/// What was compared, and found to be as it must.
struct ProofCounters {
    uint64_t sentences = 0;
    uint64_t timed = 0;  ///< sentences whose time is that of their message's stamp
    uint64_t epochs = 0;
    uint64_t messages = 0;
    uint64_t otherMessages = 0;  ///< of other types, passed over
    uint64_t splitEpochs = 0;    ///< in more messages than they need, see RecordingRules::live
};

/// Proves that a trace holds what a log says: the log is recorded again, in memory, and compared
/// with the trace as it comes. Live, each epoch is compared sentence by sentence; see LiveProof.
///
/// \throws DataError at the first difference; names the byte of the trace and that of the log
ProofCounters proveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules);

}  // namespace vextrace::tools
