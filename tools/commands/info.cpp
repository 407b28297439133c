#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

/// Writes summaries as they come, so that thousands of them need no memory.
class InfoReport {
public:
    InfoReport() = default;
    InfoReport(const InfoReport&) = delete;
    InfoReport& operator=(const InfoReport&) = delete;
    virtual ~InfoReport() = default;
    virtual void addTrace(const std::string& name, const Summary& summary) = 0;
    virtual void addAll(uint64_t traces, const Summary& all) = 0;
};

class TextReport : public InfoReport {
public:
    TextReport(OutputFile& destination, bool isLong) : output(destination), longForm(isLong) {}
    void addTrace(const std::string& name, const Summary& summary) override {
        output.write(fmt::format("{}\n{}", shownName(name), summaryText(summary, longForm)));
    }
    void addAll(uint64_t traces, const Summary& all) override {
        if (traces > 1) {
            output.write(
                fmt::format("all {}\n{}", counted(traces, "trace"), summaryText(all, longForm)));
        }
    }

private:
    OutputFile& output;
    bool longForm;
};

class TableReport : public InfoReport {
public:
    TableReport(OutputFile& destination, const std::vector<std::string>& traces)
        : output(destination), table(traces) {
        output.write(table.head());
    }
    void addTrace(const std::string& name, const Summary& summary) override {
        output.write(table.row(name, summary));
    }
    void addAll(uint64_t /*traces*/, const Summary& /*all*/) override { output.write(table.sum()); }

private:
    OutputFile& output;
    SummaryTable table;
};

// {"files": [{"file": ...}, ...], "all": {"files": N, ...}}
class JsonReport : public InfoReport {
public:
    explicit JsonReport(OutputFile& destination) : output(destination) {
        output.write("{\"files\": [");
    }
    void addTrace(const std::string& name, const Summary& summary) override {
        output.write(std::exchange(separator, ",\n"));
        write("file", utf8Name(name), summary);
    }
    void addAll(uint64_t traces, const Summary& all) override {
        output.write("],\n\"all\": ");
        write("files", traces, all);
        output.write("}\n");
    }

private:
    void write(const char* key, const Json& value, const Summary& summary) {
        output.write(summaryJson({key, value}, summary).lines());
    }

    OutputFile& output;
    const char* separator = "\n";
};

std::unique_ptr<InfoReport> makeReport(const InfoCommand& options, OutputFile& output) {
    if (options.json) {
        return std::make_unique<JsonReport>(output);
    }
    if (options.traces.size() > 1 && !options.longForm) {
        return std::make_unique<TableReport>(output, options.traces);
    }
    return std::make_unique<TextReport>(output, options.longForm);
}

class Info : public TraceVisitor {
public:
    /// \param alone  whether there is one trace, which then is all traces
    Info(InfoReport& destination, timeStamp_t longestPause, bool alone)
        : report(destination), isAlone(alone), all(longestPause), own(longestPause) {}

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

    void endTrace(uint64_t /*bytes*/) override {
        fixes.endTrace();
        all.endTrace();
        own.endTrace();
        report.addTrace(name, isAlone ? all : own);
        ++traces;
    }

    /// Whether there was any trace to sum up.
    bool finish() {
        if (traces != 0) {
            report.addAll(traces, all);
        }
        return traces != 0;
    }

private:
    void add(const TraceItem& item, const std::optional<Fix>& fix) {
        all.add(item, fix);
        if (!isAlone) {
            own.add(item, fix);
        }
    }

    InfoReport& report;
    const bool isAlone;
    FixReader fixes;
    Summary all;
    Summary own;  // of the trace in hand
    std::string name;
    uint64_t traces = 0;
};

}  // namespace

int info(const InfoCommand& options) {
    const timeStamp_t gap = gapArgument(options.gap, true);
    Walk walk;
    walk.traces = options.traces;
    walk.span = spanArgument(options.from, options.until);
    OutputFile output("-", false, statusesThatExist(options.traces));
    const std::unique_ptr<InfoReport> report = makeReport(options, output);
    Info visitor(*report, gap, options.traces.size() == 1);
    const Walked walked = walkTraces(walk, visitor);
    if (visitor.finish()) {
        output.commit();
    }
    return walked.status;
}

}  // namespace vextrace::tools
