#include <fmt/core.h>

#include <string>

#include "tools/commands/commands.h"
#include "tools/commands/folders.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/MessageCopy.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

namespace {

int repairOne(const std::string& input, const std::string& output, bool force) {
    OutputFile file(output, force, inputStatuses({input}));
    MessageCopy copy(file);
    const Walked walked = walkTraces({.traces = {input}}, copy);
    if (walked.foundTrace) {
        copy.settle();
        file.commit();
        tell(fmt::format("{}: {}", shownName(input), copy.summary()));
    }
    return walked.status;
}

}  // namespace

int repair(const RepairCommand& options) {
    const auto run = [&](const std::string& input, const std::string& output) {
        return repairOne(input, output, options.force);
    };
    std::vector<std::string> traces = options.names;
    std::string output = options.output;
    if (output.empty()) {
        if (traces.size() < 2) {
            throw UsageError("OUT is required");
        }
        output = traces.back();
        traces.pop_back();
    }
    if (isFolder(output)) {
        return fillFolder({traces, output, ".trace", options.jobs, run});
    }
    if (output == "-" && outputIsTerminal()) {
        throw UsageError("OUT: name a file for the trace; it is not for a terminal");
    }
    if (traces.size() != 1) {
        throw UsageError("several traces need a folder for what is kept of them, such as mended/");
    }
    return run(traces.front(), output);
}

}  // namespace vextrace::tools
