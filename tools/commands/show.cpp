#include <fmt/format.h>
#include <unistd.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "libvexstream/Fix.h"
#include "libvexstream/TraceReader.h"
#include "libvexstream/utc.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/growth.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/DamageLog.h"
#include "tools/trace/LineWriter.h"
#include "tools/trace/views.h"

namespace vextrace::tools {

namespace {

struct Arguments {
    bool fields = false;
    bool fix = false;
    bool rdb = false;
    bool hex = false;
    bool first = false;
    bool follow = false;
    bool number = false;
    bool utc = false;
    bool raw = false;
    std::string from;
    std::string until;
    std::string trace;

    bool choosesNoView() const { return !fields && !fix && !rdb && !hex; }
};

class Show {
public:
    explicit Show(const Arguments& given)
        : arguments(given),
          from(given.from.empty() ? 0 : timeArgument("--from", given.from)),
          until(given.until.empty() ? std::numeric_limits<timeStamp_t>::max()
                                    : timeArgument("--to", given.until)),
          input(given.trace),
          output("-", false, {input.identity()}),
          writer(output, given.raw),
          views(writer),
          trace(input),
          damage(input.name()),
          isGrowing(given.follow) {
        if (from > until) {
            throw UsageError("--from: is later than --to");
        }
    }

    ExitStatus run();

private:
    void showAll();
    bool goOn();
    void use(TraceItem& item);
    void show(const TraceItem& item);
    bool isChosen(const GpsView& gps) const;
    std::string prefixOf(timeStamp_t stamp) const;

    const Arguments& arguments;
    timeStamp_t from;
    timeStamp_t until;
    InputFile input;
    OutputFile output;
    LineWriter writer;
    Views views;
    TraceReader trace;
    DamageLog damage;
    bool isGrowing;
    bool isDone = false;
    uint64_t gpsMessages = 0;
    uint64_t otherMessages = 0;
};

ExitStatus Show::run() {
    try {
        showAll();
    } catch (const DataError&) {
        output.commit();  // what was sound before
        throw;
    }
    damage.finish();
    output.commit();
    if (gpsMessages == 0 && otherMessages != 0) {
        tell(fmt::format("{}: holds no GPS message, {} of other types", input.name(),
                         counted(otherMessages, "message")));
    }
    return damage.places() == 0 ? STATUS_OK : STATUS_DATA;
}

void Show::showAll() {
    trace.setGrowing(isGrowing);
    std::optional<Progress> progress;
    if (!isGrowing && isatty(STDOUT_FILENO) == 0) {
        progress.emplace(input.size());
    }
    while (!isDone) {
        TraceItem item = trace.next();
        if (item.kind == TraceItem::Kind::END) {
            isDone = !goOn();
            continue;
        }
        use(item);
        if (isGrowing && !input.size()) {
            output.commit();
        }
        if (progress) {
            progress->update(trace.position());
        }
    }
}

// At the end of the trace: whether more may come.
bool Show::goOn() {
    if (!isGrowing) {
        return false;
    }
    output.commit();
    // Where whoever wrote a pipe has gone, what is left is looked at once more.
    isGrowing = waitForGrowth(input, trace.position());
    trace.setGrowing(isGrowing);
    return true;
}

void Show::use(TraceItem& item) {
    if (item.kind == TraceItem::Kind::GPS) {
        ++gpsMessages;
        if (isChosen(*item.gps)) {
            show(item);
            isDone = arguments.first;
        }
    } else if (item.kind == TraceItem::Kind::OTHER) {
        ++otherMessages;
    } else {
        output.commit();  // on a terminal the lines come in order
        damage.add(item);
        setStatusOnInterrupt(STATUS_DATA);
    }
}

bool Show::isChosen(const GpsView& gps) const {
    const timeStamp_t stamp = gps.getTimeStamp();
    if (stamp < from || stamp > until) {
        return false;
    }
    if (!arguments.first) {
        return true;
    }
    const std::optional<Fix> fix = fixOf(gps);
    return fix && fix->valid;
}

void Show::show(const TraceItem& item) {
    const GpsView& gps = *item.gps;
    writer.setPrefix(prefixOf(gps.getTimeStamp()));
    if (arguments.fields) {
        views.showFields(gps.message());
    }
    if (arguments.fix) {
        views.showFix(gps);
    }
    if (arguments.rdb) {
        views.showRdb(gps.message());
    }
    if (arguments.hex) {
        views.showBytes(item.bytes);
    }
    if (arguments.choosesNoView()) {
        views.showLine(gps);
    }
}

std::string Show::prefixOf(timeStamp_t stamp) const {
    std::string prefix;
    if (arguments.number) {
        prefix = fmt::format("{} ", gpsMessages + otherMessages);
    }
    if (arguments.utc) {
        prefix += (stamp == 0 ? "-" : utcText(stamp)) + ' ';
    }
    return prefix;
}

}  // namespace

void addShow(CLI::App& app, ExitStatus& status) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(
        "show",
        "Prints the trace line of each GPS message of a trace, or other views of it.\n"
        "Example: vextrace show --utc --fix drive.trace");
    command->add_flag("--fields", arguments->fields,
                      "the fields of its RMC and GGA sentences, numbered, without line ends");
    command->add_flag("--fix", arguments->fix, "its RMC and GGA sentences as numbers");
    command->add_flag("--rdb", arguments->rdb, "the RDB text; nothing without a position");
    command->add_flag("--hex", arguments->hex, "its bytes in the trace");
    command->add_flag("--first", arguments->first, "only the first message that has a valid fix");
    command->add_option("--from", arguments->from,
                        "leave out what is before this UTC, such as 2026-11-21T12:35:19.5Z");
    command->add_option("--to,--until", arguments->until, "leave out what is behind this UTC");
    command->add_flag("--number", arguments->number,
                      "each line begins with the message's number in the trace");
    command->add_flag("--utc", arguments->utc,
                      "each line begins with the message's time stamp as UTC, - where it has none");
    command->add_flag("--raw", arguments->raw,
                      "write control characters and bytes that are no UTF-8 as they are, not as "
                      "escapes such as \\x1b");
    command->add_flag("--follow", arguments->follow, "wait for more at the end, until interrupted");
    command->add_option("TRACE", arguments->trace, "the trace; - is standard input")->required();
    command->callback([arguments, &status] {
        if (arguments->follow) {
            endQuietlyOnInterrupt();
        }
        status = Show(*arguments).run();
    });
}

}  // namespace vextrace::tools
