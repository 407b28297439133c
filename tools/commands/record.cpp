#include <fmt/core.h>

#include <string>
#include <vector>

#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/commands/folders.h"
#include "tools/trace/Recorder.h"

namespace vextrace::tools {

namespace {

// A day, lest a number of seconds is taken for one of milliseconds.
constexpr int LONGEST_IDLE = 24 * 3600 * 1000;

RecordOptions optionsOf(const RecordCommand& arguments) {
    RecordOptions options;
    if (arguments.append || arguments.force) {
        options.existing = arguments.append ? ExistingFile::APPEND : ExistingFile::REPLACE;
    }
    options.baud = arguments.baud;
    if (arguments.stamp == "arrival") {
        options.stamps = StampSource::ARRIVAL;
    }
    options.date = dateArgument(arguments.date);
    options.idle = std::chrono::milliseconds(arguments.idle);
    options.sync = arguments.sync;
    options.quiet = arguments.quiet;
    return options;
}

}  // namespace

int record(const RecordCommand& options) {
    if (options.idle < 0 || options.idle > LONGEST_IDLE) {
        throw UsageError(
            fmt::format("--idle: takes milliseconds from 0 to {}, a day", LONGEST_IDLE));
    }
    if (options.append && options.force) {
        throw UsageError("--append, --force: one of them at most");
    }
    RecordOptions recording = optionsOf(options);
    const auto recordOne = [&](const std::string& input, const std::string& output) {
        recording.input = input;
        recording.output = output;
        return Recorder(recording).run();
    };
    std::vector<std::string> inputs = options.inputs;
    if (inputs.empty()) {
        inputs = {"-"};
    }
    if (isFolder(options.output)) {
        return fillFolder({inputs, options.output, ".trace", options.jobs, recordOne});
    }
    if (inputs.size() > 1) {
        throw UsageError("-o: several logs need a folder for their traces, such as traces/");
    }
    return recordOne(inputs.front(), options.output);
}

}  // namespace vextrace::tools
