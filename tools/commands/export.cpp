#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/export/Exporter.h"
#include "tools/export/Format.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/DamageLog.h"

namespace vextrace::tools {

namespace {

struct NamedFormat {
    std::string_view name;
    std::unique_ptr<Format> (*make)(OutputFile&);
};

constexpr NamedFormat FORMATS[] = {
    {"gpx", makeGpx}, {"geojson", makeGeoJson}, {"kml", makeKml},
    {"csv", makeCsv}, {"jsonl", makeJsonLines}, {"nmea", makeNmea},
};

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (const NamedFormat& format : FORMATS) {
        names.emplace_back(format.name);
    }
    return names;
}

struct Arguments {
    std::string format;
    std::string output = "-";
    bool force = false;
    double gap = 5;
    std::string from;
    std::string until;
    bool unchecked = false;
    std::vector<std::string> traces;
};

std::unique_ptr<Format> makeFormat(std::string_view name, OutputFile& output) {
    const auto* format = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                      [&](const NamedFormat& known) { return known.name == name; });
    return format->make(output);
}

ExportChoice choiceOf(const Arguments& arguments) {
    ExportChoice choice;
    choice.gap = secondsArgument("--gap", arguments.gap);
    choice.unchecked = arguments.unchecked;
    if (!arguments.from.empty()) {
        choice.from = timeArgument("--from", arguments.from);
    }
    if (!arguments.until.empty()) {
        choice.until = timeArgument("--until", arguments.until);
    }
    if (choice.from > choice.until) {
        throw UsageError("--from: is later than --until");
    }
    return choice;
}

// How far all traces are. Nothing is shown where the document itself goes to a terminal.
class ExportProgress {
public:
    ExportProgress(const std::vector<struct stat>& inputs, bool isShown) {
        if (isShown) {
            progress.emplace(totalSize(inputs));
        }
    }

    void update(uint64_t position) {
        if (progress) {
            progress->update(before + position);
        }
    }

    void endTrace(uint64_t position) { before += position; }

private:
    std::optional<Progress> progress;
    uint64_t before = 0;
};

void exportMessages(TraceReader& trace, Exporter& exporter, DamageLog& damage,
                    ExportProgress& progress) {
    for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END; item = trace.next()) {
        if (item.kind == TraceItem::Kind::GPS) {
            exporter.add(*item.gps);
        } else if (item.kind == TraceItem::Kind::OTHER) {
            exporter.addOther();
        } else {
            damage.add(item);
        }
        progress.update(trace.position());
    }
}

// What came of a trace.
struct Outcome {
    bool isSound;  // nothing is damaged
    bool isTrace;  // it holds a message, or nothing at all
};

// What is good goes out, whatever is damaged. An input that fails ends its trace, not the export.
Outcome exportTrace(const std::string& path, Exporter& exporter, ExportProgress& progress) {
    InputFile input(path);
    TraceReader trace(input);
    DamageLog damage(input.name());
    bool isWhole = true;
    try {
        exportMessages(trace, exporter, damage, progress);
    } catch (const ReadError& error) {
        tell(error.what());
        isWhole = false;
    }
    damage.finish();
    exporter.endTrace();
    progress.endTrace(trace.position());
    const bool isSound = isWhole && damage.places() == 0;
    return {isSound, isSound || trace.foundMessage()};
}

ExitStatus run(const Arguments& arguments) {
    const ExportChoice choice = choiceOf(arguments);
    const std::vector<struct stat> inputs = inputStatuses(arguments.traces);
    OutputFile output(arguments.output, arguments.force, inputs);
    const std::unique_ptr<Format> format = makeFormat(arguments.format, output);
    Exporter exporter(*format, choice);
    ExportProgress progress(inputs, arguments.output != "-" || isatty(STDOUT_FILENO) == 0);
    format->begin();
    ExitStatus status = STATUS_OK;
    bool foundTrace = false;
    for (const std::string& path : arguments.traces) {
        const Outcome outcome = exportTrace(path, exporter, progress);
        status = outcome.isSound ? status : STATUS_DATA;
        foundTrace |= outcome.isTrace;
    }
    if (!foundTrace) {
        return status;
    }
    format->end();
    output.commit();
    if (const std::string leftOut = exporter.leftOut(); !leftOut.empty()) {
        tell(fmt::format("left out: {}", leftOut));
    }
    return status;
}

}  // namespace

void addExport(CLI::App& app, ExitStatus& status) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(
        "export",
        "Writes the fixes of traces, or their sentences, in a format that other programs read.\n"
        "Example: vextrace export --to gpx -o drive.gpx drive.trace");
    command->add_option("--to", arguments->format, "the format")
        ->required()
        ->check(CLI::IsMember(formatNames()));
    command->add_option("-o,--output", arguments->output, "file to write; standard output is -");
    command->add_flag("--force", arguments->force, "replace the output where it exists");
    command->add_option("--gap", arguments->gap,
                        "begin a new line behind so many seconds without a fix (5)");
    command->add_option("--from", arguments->from,
                        "leave out what is before this time, such as 2026-11-21T12:35:19Z");
    command->add_option("--until", arguments->until, "leave out what is behind this time");
    command->add_flag("--unchecked", arguments->unchecked,
                      "take fixes whose sentences have a wrong checksum, too");
    command->add_option("TRACE", arguments->traces, "traces, in this order; standard input is -")
        ->required();
    command->callback([arguments, &status] { status = run(*arguments); });
}

}  // namespace vextrace::tools
