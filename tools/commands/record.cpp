#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>

#include "libvexstream/utc.h"
#include "tools/commands/commands.h"
#include "tools/io/escape.h"
#include "tools/trace/Recorder.h"

namespace vextrace::tools {

namespace {

// A day, lest a number of seconds is taken for one of milliseconds.
constexpr int LONGEST_IDLE = 24 * 3600 * 1000;

struct Arguments {
    std::string input = "-";
    std::string output = "-";
    unsigned baud = 0;
    int idle = 500;
    bool append = false;
    bool force = false;
    bool sync = false;
    std::string date;
    std::string stamp = "utc";
};

std::chrono::sys_days dateOf(const std::string& text) {
    const std::optional<std::chrono::sys_days> date = parseDate(text);
    if (!date) {
        throw UsageError(fmt::format("--date: {} is no day, YYYY-MM-DD", escaped(text)));
    }
    return *date;
}

RecordOptions optionsOf(const Arguments& arguments, bool hasBaud) {
    RecordOptions options;
    options.input = arguments.input;
    options.output = arguments.output;
    if (arguments.append || arguments.force) {
        options.existing = arguments.append ? ExistingTrace::APPEND : ExistingTrace::REPLACE;
    }
    if (hasBaud) {
        options.baud = arguments.baud;
    }
    if (arguments.stamp == "arrival") {
        options.stamps = StampSource::ARRIVAL;
    }
    if (!arguments.date.empty()) {
        options.date = dateOf(arguments.date);
    }
    options.idle = std::chrono::milliseconds(arguments.idle);
    options.sync = arguments.sync;
    return options;
}

}  // namespace

void addRecord(CLI::App& app, ExitStatus& status) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = app.add_subcommand(
        "record",
        "Records what a receiver sends as a trace: one epoch, one place, one time stamp. An epoch\n"
        "is written as soon as it is over.\n"
        "Example: vextrace record -o drive.trace --baud 9600 /dev/ttyACM0");
    command->add_option("IN", arguments->input,
                        "A log, a FIFO or a serial line; standard input unless given, or -");
    command->add_option("-o,--output", arguments->output,
                        "The trace; standard output unless given, or -");
    CLI::Option* const append = command->add_flag(
        "--append", arguments->append,
        "Go on behind an existing trace; a torn message at its end is moved to a file beside it");
    command->add_flag("--force", arguments->force, "Replace an existing file")->excludes(append);
    const CLI::Option* const baud =
        command->add_option("--baud", arguments->baud,
                            "Bits a second of a serial line; what it is set to unless given");
    command
        ->add_option("--idle", arguments->idle,
                     "Milliseconds of silence that end an epoch, 500 unless given")
        ->check(CLI::Range(0, LONGEST_IDLE));
    command->add_flag("--sync", arguments->sync, "Wait behind each epoch until the device has it");
    command->add_option("--date", arguments->date,
                        "The day, YYYY-MM-DD, as long as the receiver sends none");
    command
        ->add_option("--stamp", arguments->stamp,
                     "utc, the receiver's date and time (default), or arrival, the system's clock "
                     "at an epoch's first byte")
        ->check(CLI::IsMember({"utc", "arrival"}));
    command->callback([arguments, baud, &status] {
        status = Recorder(optionsOf(*arguments, baud->count() > 0)).run();
    });
}

}  // namespace vextrace::tools
