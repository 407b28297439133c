#include <fmt/format.h>

#include <memory>

#include "libvexstream/utc.h"
#include "tools/commands/commands.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/trace/TraceProof.h"

namespace vextrace::tools {

namespace {

struct CheckOptions {
    std::string log;
    std::string trace;
    std::string date;
    std::string stamp = "utc";
    bool live = false;
};

RecordingRules rulesOf(const CheckOptions& options) {
    RecordingRules rules;
    rules.arrival = options.stamp == "arrival";
    rules.live = options.live;
    if (!options.date.empty()) {
        rules.date = parseDate(options.date);
        if (!rules.date) {
            throw UsageError(
                fmt::format("--date: {} is no day, YYYY-MM-DD", escaped(options.date)));
        }
    }
    return rules;
}

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

void check(const CheckOptions& options) {
    const RecordingRules rules = rulesOf(options);
    if (options.log == "-" && options.trace == "-") {
        throw UsageError("LOG and TRACE cannot both be standard input");
    }
    InputFile log(options.log);
    InputFile trace(options.trace);
    OutputFile out("-", false, {log.identity(), trace.identity()});
    out.write(reportOf(proveTrace(log, trace, rules), rules));
    out.commit();
}

}  // namespace

void addCheck(CLI::App& app, ExitStatus& /*status*/) {
    const auto options = std::make_shared<CheckOptions>();
    CLI::App* command = app.add_subcommand(
        "check",
        "Proves that a trace holds what the receiver sent: every sentence of the log, in its\n"
        "epoch's messages, under the time that it says.\n"
        "Example: vextrace check drive.nmea drive.trace");
    command->add_option("LOG", options->log, "What the receiver sent; - is standard input")
        ->required();
    command->add_option("TRACE", options->trace, "The recording; - is standard input")->required();
    command->add_option("--date", options->date, "The day that record was told, YYYY-MM-DD");
    command
        ->add_option("--stamp", options->stamp,
                     "The stamps that record was told: utc (default) or arrival")
        ->check(CLI::IsMember({"utc", "arrival"}));
    command->add_flag("--live", options->live,
                      "The log was recorded as it came: silence or a stop may have divided epochs");
    command->callback([options] { check(*options); });
}

}  // namespace vextrace::tools
