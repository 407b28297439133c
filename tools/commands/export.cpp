#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/export/Exporter.h"
#include "tools/export/Format.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
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

std::unique_ptr<Format> makeFormat(std::string_view name, OutputFile& output) {
    const auto* format = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                      [&](const NamedFormat& known) { return known.name == name; });
    return format->make(output);
}

ExportChoice choiceOf(const ExportCommand& options) {
    ExportChoice choice;
    choice.gap = secondsArgument("--gap", options.gap);
    choice.unchecked = options.unchecked;
    return choice;
}

class Export : public TraceVisitor {
public:
    Export(Format& format, const ExportChoice& choice) : exporter(format, choice) {}

    void beginTrace(const std::string& path) override { exporter.beginTrace(path); }

    void addMessage(const TraceItem& message, uint64_t number) override {
        if (message.kind == TraceItem::Kind::GPS) {
            exporter.add(*message.gps, number);
        } else {
            exporter.addOther();
        }
    }

    void passOver(const TraceItem& message) override {
        if (message.kind == TraceItem::Kind::GPS) {
            exporter.addOutside(*message.gps);
        } else {
            exporter.addOther();
        }
    }

    void endTrace(uint64_t /*bytes*/) override { exporter.endTrace(); }

    std::string leftOut() const { return exporter.leftOut(); }

private:
    Exporter exporter;
};

}  // namespace

std::vector<std::string> exportFormats() {
    std::vector<std::string> names;
    for (const NamedFormat& format : FORMATS) {
        names.emplace_back(format.name);
    }
    return names;
}

int exportTraces(const ExportCommand& options) {
    const ExportChoice choice = choiceOf(options);
    Walk walk;
    walk.traces = options.traces;
    walk.span = spanArgument(options.from, options.until);
    walk.showsProgress = options.output != "-" || !outputIsTerminal();
    OutputFile output(options.output, options.force, inputStatuses(options.traces));
    const std::unique_ptr<Format> format = makeFormat(options.format, output);
    Export document(*format, choice);
    format->begin();
    const Walked walked = walkTraces(walk, document);
    if (!walked.foundTrace) {
        return walked.status;
    }
    format->end();
    output.commit();
    if (const std::string leftOut = document.leftOut(); !leftOut.empty()) {
        tell(fmt::format("left out: {}", leftOut));
    }
    return walked.status;
}

}  // namespace vextrace::tools
