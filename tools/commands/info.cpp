#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/DamageLog.h"
#include "tools/trace/Summary.h"
#include "tools/trace/summaryText.h"

namespace vextrace::tools {

namespace {

struct Arguments {
    double gap = 5;
    bool json = false;
    std::vector<std::string> traces;
};

timeStamp_t nanoseconds(double seconds) {
    constexpr double MOST = 1e9;  // some thirty years
    if (!(seconds >= 0)) {
        throw UsageError("--gap: takes a number of seconds that is not negative");
    }
    return static_cast<timeStamp_t>(std::min(seconds, MOST) * 1e9);
}

/// Writes summaries as they come, so that thousands of them need no memory.
class Report {
public:
    Report() = default;
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    virtual ~Report() = default;
    virtual void addTrace(const std::string& name, const Summary& summary) = 0;
    virtual void addAll(uint64_t traces, const Summary& all) = 0;
};

class TextReport : public Report {
public:
    explicit TextReport(OutputFile& destination) : output(destination) {}
    void addTrace(const std::string& name, const Summary& summary) override {
        output.write(fmt::format("{}\n{}", shownName(name), summaryText(summary)));
    }
    void addAll(uint64_t traces, const Summary& all) override {
        if (traces > 1) {
            output.write(fmt::format("all {}\n{}", counted(traces, "trace"), summaryText(all)));
        }
    }

private:
    OutputFile& output;
};

// {"files": [{"file": ...}, ...], "all": {"files": N, ...}}
class JsonReport : public Report {
public:
    explicit JsonReport(OutputFile& destination) : output(destination) {
        output.write("{\"files\": [");
    }
    void addTrace(const std::string& name, const Summary& summary) override {
        output.write(std::exchange(separator, ",\n"));
        write("file", nameOf(name), summary);
    }
    void addAll(uint64_t traces, const Summary& all) override {
        output.write("],\n\"all\": ");
        write("files", traces, all);
        output.write("}\n");
    }

private:
    void write(const char* key, const nlohmann::ordered_json& value, const Summary& summary) {
        nlohmann::ordered_json json = {{key, value}};
        json.update(summaryJson(summary));
        output.write(json.dump(1));
    }

    // JSON holds nothing but UTF-8.
    static std::string nameOf(const std::string& name) {
        try {
            static_cast<void>(nlohmann::ordered_json(name).dump());
            return name;
        } catch (const nlohmann::ordered_json::type_error&) {
            return escaped(name);
        }
    }

    OutputFile& output;
    const char* separator = "\n";
};

std::unique_ptr<Report> makeReport(bool isJson, OutputFile& output) {
    if (isJson) {
        return std::make_unique<JsonReport>(output);
    }
    return std::make_unique<TextReport>(output);
}

// What is there and can be asked; the others are told of when their turn comes.
std::vector<struct stat> statusesOf(const std::vector<std::string>& paths) {
    std::vector<struct stat> statuses;
    for (const std::string& path : paths) {
        struct stat status = {};
        const bool isStandardInput = path == "-";
        if ((isStandardInput ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status)) == 0) {
            statuses.push_back(status);
        }
    }
    return statuses;
}

class Info {
public:
    explicit Info(const Arguments& given)
        : arguments(given),
          gap(nanoseconds(given.gap)),
          statuses(statusesOf(given.traces)),
          output("-", false, statuses),
          report(makeReport(given.json, output)),
          progress(totalSize(statuses)),
          all(gap) {}

    ExitStatus run();

private:
    void addTrace(const std::string& path);
    Summary summarise(InputFile& input);
    void fail(Status failure, const char* reason);

    const Arguments& arguments;
    timeStamp_t gap;
    std::vector<struct stat> statuses;
    OutputFile output;
    std::unique_ptr<Report> report;
    Progress progress;
    Summary all;
    uint64_t traces = 0;
    ExitStatus status = STATUS_OK;
};

ExitStatus Info::run() {
    for (const std::string& path : arguments.traces) {
        try {
            addTrace(path);
        } catch (const UsageError& error) {
            fail(STATUS_USAGE, error.what());
        }
    }
    if (traces != 0) {
        report->addAll(traces, all);
        output.commit();
    }
    return status;
}

void Info::addTrace(const std::string& path) {
    InputFile input(path);
    const Summary summary = summarise(input);
    report->addTrace(path, summary);
    all.merge(summary);
    ++traces;
}

// Of a trace that cannot be read on, what was read counts.
Summary Info::summarise(InputFile& input) {
    Summary summary(gap);
    TraceReader trace(input);
    DamageLog damage(input.name());
    try {
        for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END;
             item = trace.next()) {
            if (item.kind == TraceItem::Kind::DAMAGE) {
                damage.add(item);
                status = std::max<ExitStatus>(status, STATUS_DATA);
            }
            summary.add(item);
            progress.update(all.bytes + summary.bytes);
        }
    } catch (const ReadError& error) {
        fail(STATUS_DATA, error.what());
    }
    damage.finish();
    summary.endTrace();
    return summary;
}

void Info::fail(Status failure, const char* reason) {
    tell(reason);
    status = std::max<ExitStatus>(status, failure);
}

}  // namespace

void addInfo(CLI::App& app, ExitStatus& status) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(
        "info",
        "Sums up traces: what is in them, when and where it was recorded, how good it is.\n"
        "Example: vextrace info drive.trace");
    command->add_option("--gap", arguments->gap,
                        "call a pause of more than so many seconds a gap (5)");
    command->add_flag("--json", arguments->json, "write JSON, for programs");
    command->add_option("TRACE", arguments->traces, "traces; - is standard input")->required();
    command->callback([arguments, &status] { status = Info(*arguments).run(); });
}

}  // namespace vextrace::tools
