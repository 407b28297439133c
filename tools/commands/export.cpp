#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/commands/folders.h"
#include "tools/export/Exporter.h"
#include "tools/export/Format.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/walkTraces.h"

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

const NamedFormat* findFormat(std::string_view name) {
    const auto* const format =
        std::find_if(std::begin(FORMATS), std::end(FORMATS),
                     [&](const NamedFormat& known) { return known.name == name; });
    return format == std::end(FORMATS) ? nullptr : format;
}

std::string inLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// The one that was asked for, or that the name of the output tells.
const NamedFormat& formatOf(const ExportCommand& options) {
    const size_t point = options.output.rfind('.');
    const std::string name = !options.format.empty() ? options.format
                             : point != std::string::npos
                                 ? inLowerCase(options.output.substr(point + 1))
                                 : "";
    if (const NamedFormat* const format = findFormat(name)) {
        return *format;
    }
    std::string names;
    for (const NamedFormat& format : FORMATS) {
        names += fmt::format("{}{}", names.empty() ? "" : ", ", format.name);
    }
    throw UsageError(fmt::format(
        "--to: name a format, one of {}; or an output behind -o that ends in one", names));
}

// \param prefix  in front of what is told
int exportTo(const NamedFormat& named, const ExportCommand& options, const std::string& prefix) {
    const timeStamp_t gap = gapArgument(options.gap);
    const Walk walk = {.traces = options.traces,
                       .span = spanArgument(options.from, options.until),
                       .showsProgress = options.output != "-" || !outputIsTerminal()};
    OutputFile output(options.output, options.force, inputStatuses(options.traces));
    const std::unique_ptr<Format> format = named.make(output);
    Exporter exporter(*format, gap, options.unchecked);
    format->begin();
    const Walked walked = walkTraces(walk, exporter);
    if (!walked.foundTrace) {
        return walked.status;
    }
    format->end();
    output.commit();
    if (const std::string leftOut = exporter.leftOut(); !leftOut.empty()) {
        tell(fmt::format("{}left out: {}", prefix, leftOut));
    }
    return walked.status;
}

}  // namespace

std::vector<std::string> exportFormats() {
    std::vector<std::string> names;
    for (const NamedFormat& format : FORMATS) {
        names.emplace_back(format.name);
    }
    return names;
}

int exportTraces(const ExportCommand& options) {
    const NamedFormat& format = formatOf(options);
    if (!isFolder(options.output)) {
        return exportTo(format, options, "");
    }
    return fillFolder({options.traces, options.output, fmt::format(".{}", format.name),
                       options.jobs, [&](const std::string& input, const std::string& output) {
                           ExportCommand one = options;
                           one.traces = {input};
                           one.output = output;
                           return exportTo(format, one, shownName(input) + ": ");
                       }});
}

}  // namespace vextrace::tools
