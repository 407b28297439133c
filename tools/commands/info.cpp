#include <fmt/core.h>

#include <optional>
#include <string>

#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/json.h"
#include "tools/io/plural.h"
#include "tools/trace/Summary.h"
#include "tools/trace/SummaryTable.h"
#include "tools/trace/summaryText.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

namespace {

// Writes summaries as they come, so that thousands of them need no memory: as texts, as lines of a
// table, or as {"files": [{"file": ...}, ...], "all": {"files": N, ...}}.
class Info : public TraceVisitor {
public:
    Info(const InfoCommand& given, OutputFile& destination, timeStamp_t longestPause);

    void beginTrace(const std::string& path) override {
        name = path;
        own = Summary(all.gapLimit());
    }
    void addMessage(const TraceItem& message, uint64_t /*number*/) override {
        add(message, message.gps != nullptr ? fixes.read(*message.gps) : std::nullopt);
    }
    // What is not summed up has a say in the verdicts on what follows.
    void passOver(const TraceItem& message) override {
        if (message.gps != nullptr) {
            fixes.read(*message.gps);
        }
    }
    void addDamage(const TraceItem& damage) override { add(damage, std::nullopt); }
    void endTrace(uint64_t bytes) override;

    // Nothing is written where there was no trace.
    void finish();

private:
    void add(const TraceItem& item, const std::optional<Fix>& fix) {
        all.add(item, fix);
        if (!isAlone) {
            own.add(item, fix);
        }
    }
    void write(const Summary& summary);
    void writeAll();

    const InfoCommand& options;
    OutputFile& output;
    const bool isAlone;  // one trace, which is all traces
    std::optional<SummaryTable> table;
    FixReader fixes;
    Summary all;
    Summary own;  // of the trace in hand
    std::string name;
    uint64_t traces = 0;
};

Info::Info(const InfoCommand& given, OutputFile& destination, timeStamp_t longestPause)
    : options(given),
      output(destination),
      isAlone(given.traces.size() == 1),
      all(longestPause),
      own(longestPause) {
    if (options.json) {
        output.write("{\"files\": [");
    } else if (!isAlone && !options.longForm) {
        output.write(table.emplace(options.traces).head());
    }
}

void Info::endTrace(uint64_t /*bytes*/) {
    fixes.endTrace();
    all.endTrace();
    own.endTrace();
    write(isAlone ? all : own);
    ++traces;
}

void Info::write(const Summary& summary) {
    if (options.json) {
        output.write(traces == 0 ? "\n" : ",\n");
        output.write(summaryJson({"file", utf8Name(name)}, summary).lines());
    } else if (table) {
        output.write(table->row(name, summary));
    } else {
        output.write(
            fmt::format("{}\n{}", shownName(name), summaryText(summary, options.longForm)));
    }
}

void Info::finish() {
    if (traces != 0) {
        writeAll();
        output.commit();
    }
}

void Info::writeAll() {
    if (options.json) {
        output.write("],\n\"all\": " + summaryJson({"files", traces}, all).lines() + "}\n");
    } else if (table) {
        output.write(table->sum());
    } else if (traces > 1) {
        output.write(fmt::format("all {}\n{}", counted(traces, "trace"),
                                 summaryText(all, options.longForm)));
    }
}

}  // namespace

int info(const InfoCommand& options) {
    const timeStamp_t gap = gapArgument(options.gap, true);
    const Walk walk = {options.traces, spanArgument(options.from, options.until)};
    OutputFile output("-", false, statusesThatExist(options.traces));
    Info visitor(options, output, gap);
    const Walked walked = walkTraces(walk, visitor);
    visitor.finish();
    return walked.status;
}

}  // namespace vextrace::tools
