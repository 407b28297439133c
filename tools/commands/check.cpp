#include <fmt/core.h>

#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/trace/TraceProof.h"
#include "tools/trace/kinds.h"

namespace vextrace::tools {

namespace {

std::string reportOf(const ProofCounters& counters, const RecordingRules& rules) {
    std::string text = fmt::format(
        "{}, each in the place where its epoch must have it\n"
        "{} of {}, used up to the last sentence\n",
        counted(counters.sentences, "sentence"), counted(counters.messages, "message"),
        counted(counters.epochs, "epoch"));
    if (!rules.arrival) {
        text += fmt::format("{} with the time of their message's stamp\n",
                            counted(counters.timed, "timed sentence"));
    }
    if (counters.splitEpochs != 0) {
        text += fmt::format("{} in more messages than needed\n",
                            counted(counters.splitEpochs, "epoch"));
    }
    if (counters.otherMessages != 0) {
        text += fmt::format("{} of other types passed over\n",
                            counted(counters.otherMessages, "message"));
    }
    return text;
}

void refuseSwapped(const CheckCommand& options) {
    if (looksLikeTrace(frontOf(options.log)) && looksLikeLog(frontOf(options.trace))) {
        throw UsageError(
            fmt::format("LOG and TRACE are swapped: {} is a trace, and {} looks like NMEA",
                        shownName(options.log), shownName(options.trace)));
    }
}

}  // namespace

int check(const CheckCommand& options) {
    const RecordingRules rules = {options.stamp == "arrival", dateArgument(options.date)};
    if (options.log == "-" && options.trace == "-") {
        throw UsageError("LOG and TRACE cannot both be standard input");
    }
    refuseSwapped(options);
    InputFile log(options.log);
    InputFile trace(options.trace);
    OutputFile out("-", false, {log.identity(), trace.identity()});
    const auto prove = options.live ? proveLiveTrace : proveTrace;
    out.write(reportOf(prove(log, trace, rules), rules));
    out.commit();
    return STATUS_OK;
}

}  // namespace vextrace::tools
