#pragma once

#include <chrono>
#include <cstdint>

#include "tools/io/InputFile.h"

namespace vextrace::tools {

/// How the trace was recorded.
struct RecordingRules {
    bool arrival = false;        ///< stamps are the system's clock, not the receiver's time
    std::chrono::sys_days date;  ///< of what comes before any date is known
};

/// What was compared, and found to be as it must.
struct ProofCounters {
    uint64_t sentences = 0;
    uint64_t timed = 0;  ///< sentences whose time is that of their message's stamp
    uint64_t epochs = 0;
    uint64_t messages = 0;
    uint64_t otherMessages = 0;  ///< of other types, passed over
    uint64_t splitEpochs = 0;    ///< live: in more messages than they need
};

/// Proves that a trace holds what a log says: the log is recorded again, in memory, and compared
/// with the trace as it comes.
///
/// \throws DataError at the first difference; names the byte of the trace and that of the log
ProofCounters proveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules);

/// The same of a trace whose epochs silence may have divided anywhere, or a stop. The sentences of
/// the log are looked for code by code: the next of a code in the trace must be the next of that
/// code in the log, within the epoch. The stamps must be those that a recorder gives which divides
/// epochs where the trace changes its stamp, be it the same one or another that knew nothing.
ProofCounters proveLiveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules);

}  // namespace vextrace::tools
