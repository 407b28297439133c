#pragma once

#include "tools/io/InputFile.h"
#include "tools/trace/TraceProof.h"

namespace vextrace::tools {

/// Proves a trace whose epochs silence may have divided anywhere, or a stop. The sentences of the
/// log are looked for code by code: the next of a code in the trace must be the next of that code
/// in the log, within the epoch. The stamps must be those that a recorder gives which divides
/// epochs where the trace changes its stamp, be it the same one or another that knew nothing.
///
/// \throws as proveTrace() does
ProofCounters proveLiveTrace(InputFile& log, InputFile& trace, const RecordingRules& rules);

}  // namespace vextrace::tools
