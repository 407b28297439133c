#include <fmt/core.h>

#include <optional>
#include <string>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvexstream/utc.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/io/signals.h"
#include "tools/io/standardStreams.h"
#include "tools/io/waiting.h"
#include "tools/trace/views.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

namespace {

class Show : public TraceVisitor {
public:
    explicit Show(const ShowCommand& given)
        : options(given),
          inputs(inputStatuses({given.trace})),
          output("-", false, inputs),
          views(output, given.raw) {}

    int run();

    void addMessage(const TraceItem& message, uint64_t number) override;
    void passOver(const TraceItem& message) override;
    void addDamage(const TraceItem& damage) override;
    void addFailure(const std::string& reason) override;
    bool isDone() const override { return foundFirst; }
    bool waitForMore(const InputFile& input, uint64_t position) override;

private:
    void count(const TraceItem& message);
    std::optional<Fix> fixOf(const TraceItem& message);
    void show(const TraceItem& message, const std::optional<Fix>& fix, uint64_t number);
    std::string prefixOf(timeStamp_t stamp, uint64_t number) const;

    const ShowCommand& options;
    std::vector<FileStatus> inputs;
    OutputFile output;
    Views views;
    FixReader fixes;
    bool foundFirst = false;
    uint64_t gpsMessages = 0;
    uint64_t otherMessages = 0;
};

int Show::run() {
    const Walk walk = {.traces = {options.trace},
                       .span = spanArgument(options.from, options.until),
                       .isGrowing = options.follow,
                       .showsProgress = !options.follow && !outputIsTerminal()};
    Walked walked;
    try {
        walked = walkTraces(walk, *this);
    } catch (const DataError&) {
        output.commit();  // what was sound before
        throw;
    }
    output.commit();
    if (gpsMessages == 0 && otherMessages != 0) {
        tell(fmt::format("{}: holds no GPS message, {} of other types", shownName(options.trace),
                         counted(otherMessages, "message")));
    }
    return walked.status;
}

void Show::count(const TraceItem& message) {
    ++(message.kind == TraceItem::Kind::GPS ? gpsMessages : otherMessages);
}

void Show::addMessage(const TraceItem& message, uint64_t number) {
    count(message);
    if (message.kind != TraceItem::Kind::GPS) {
        return;
    }
    const std::optional<Fix> fix = fixOf(message);
    foundFirst = options.first && fix && fix->valid;
    if (foundFirst || !options.first) {
        show(message, fix, number);
    }
    if (options.follow && !totalSize(inputs)) {
        output.commit();
    }
}

// On a terminal the lines come in order.
void Show::addDamage(const TraceItem& /*damage*/) {
    output.commit();
    setStatusOnInterrupt(STATUS_DATA);
}

void Show::addFailure(const std::string& /*reason*/) {
    output.commit();
}

bool Show::waitForMore(const InputFile& input, uint64_t position) {
    output.commit();
    return waitForGrowth(input, position);
}

// What is passed over has a say in the verdicts on what follows.
void Show::passOver(const TraceItem& message) {
    count(message);
    fixOf(message);
}

// Where a view asks for it.
std::optional<Fix> Show::fixOf(const TraceItem& message) {
    const bool isNeeded = message.kind == TraceItem::Kind::GPS && (options.first || options.fix);
    return isNeeded ? fixes.read(*message.gps) : std::nullopt;
}

void Show::show(const TraceItem& message, const std::optional<Fix>& fix, uint64_t number) {
    const GpsView& gps = *message.gps;
    views.setPrefix(prefixOf(gps.getTimeStamp(), number));
    if (options.fields) {
        views.showFields(gps.message());
    }
    if (fix && options.fix) {
        views.showFix(gps, *fix);
    }
    if (options.rdb) {
        views.showRdb(gps.message());
    }
    if (options.hex) {
        views.showBytes(message.bytes);
    }
    if (!options.fields && !options.fix && !options.rdb && !options.hex) {
        views.showLine(gps);
    }
}

std::string Show::prefixOf(timeStamp_t stamp, uint64_t number) const {
    std::string prefix;
    if (options.number) {
        prefix = fmt::format("{} ", number);
    }
    if (options.utc) {
        prefix += (hasDate(stamp) ? utcText(stamp) : "-") + ' ';
    }
    return prefix;
}

}  // namespace

int show(const ShowCommand& options) {
    if (options.follow) {
        endQuietlyOnInterrupt();
    }
    return Show(options).run();
}

}  // namespace vextrace::tools
