#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/MessageCopy.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

int cut(const CutCommand& options) {
    const Walk walk = {options.traces, spanArgument(options.from, options.until)};
    if (options.from.empty() && options.until.empty()) {
        throw UsageError("cut: --from or --until, or both, say what is to be cut out");
    }
    if (options.output == "-" && outputIsTerminal()) {
        throw UsageError("-o: name a file for the trace; it is not for a terminal");
    }
    OutputFile output(options.output, options.force, inputStatuses(options.traces));
    MessageCopy copy(output);
    const Walked walked = walkTraces(walk, copy);
    if (copy.copied() == 0) {
        tell("no message is of the time asked for: nothing was written");
        return STATUS_DATA;
    }
    copy.settle();
    output.commit();
    tell(copy.summary());
    return walked.status;
}

}  // namespace vextrace::tools
