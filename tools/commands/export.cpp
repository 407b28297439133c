#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands/commands.h"
#include "tools/export/Exporter.h"
#include "tools/export/Format.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/escape.h"
#include "tools/io/standardStreams.h"
#include "tools/nmea/utc.h"
#include "tools/trace/DamageLog.h"
#include "tools/trace/TraceReader.h"

namespace vextools {

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

timeStamp_t timeOf(const char* option, const std::string& text) {
    const std::optional<timeStamp_t> stamp = parseUtc(text);
    if (!stamp) {
        throw UsageError(
            fmt::format("{}: {} is no time such as 2026-11-21T12:35:19.5Z", option, escaped(text)));
    }
    return *stamp;
}

timeStamp_t nanoseconds(double seconds) {
    constexpr double MOST = 1e9;  // some thirty years
    if (!(seconds > 0)) {
        throw UsageError("--gap: takes a number of seconds greater than 0");
    }
    return static_cast<timeStamp_t>(std::min(seconds, MOST) * 1e9);
}

ExportChoice choiceOf(const Arguments& arguments) {
    ExportChoice choice;
    choice.gap = nanoseconds(arguments.gap);
    choice.unchecked = arguments.unchecked;
    if (!arguments.from.empty()) {
        choice.from = timeOf("--from", arguments.from);
    }
    if (!arguments.until.empty()) {
        choice.until = timeOf("--until", arguments.until);
    }
    if (choice.from > choice.until) {
        throw UsageError("--from: is later than --until");
    }
    return choice;
}

// Looked at before anything is written, and without opening them: there may be more inputs than
// files that can be open, and a FIFO is opened once.
std::vector<struct stat> statusesOf(const std::vector<std::string>& paths) {
    std::vector<struct stat> statuses(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        const bool isThere = paths[i] == "-" ? fstat(STDIN_FILENO, &statuses[i]) == 0
                                             : stat(paths[i].c_str(), &statuses[i]) == 0 &&
                                                   access(paths[i].c_str(), R_OK) == 0;
        if (!isThere) {
            throw UsageError(
                fmt::format("{}: cannot be read: {}", shownName(paths[i]), std::strerror(errno)));
        }
        if (S_ISDIR(statuses[i].st_mode)) {
            throw UsageError(fmt::format("{}: is a directory", shownName(paths[i])));
        }
    }
    return statuses;
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
    static std::optional<uint64_t> totalSize(const std::vector<struct stat>& inputs) {
        uint64_t total = 0;
        for (const struct stat& input : inputs) {
            if (!S_ISREG(input.st_mode)) {
                return std::nullopt;
            }
            total += static_cast<uint64_t>(input.st_size);
        }
        return total;
    }

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
    const std::vector<struct stat> inputs = statusesOf(arguments.traces);
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

}  // namespace vextools
