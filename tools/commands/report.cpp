#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvexstream/TraceReader.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/standardStreams.h"
#include "tools/report/Drive.h"
#include "tools/report/Page.h"
#include "tools/report/headText.h"
#include "tools/report/shownTexts.h"
#include "tools/trace/DamageLog.h"
#include "tools/trace/Summary.h"

namespace vextrace::tools {

namespace {

// Of the page.
constexpr size_t MOST_BYTES = 1'990'000;
constexpr size_t BYTES_OF_TRACK = 400'000;
constexpr size_t BYTES_OF_NOTES = 2'000;  // on what is left out

struct Arguments {
    std::string output = "-";
    bool force = false;
    double gap = 5;
    std::string from;
    std::string until;
    std::vector<std::string> traces;
};

class Report {
public:
    explicit Report(const Arguments& given);

    ExitStatus run();

private:
    void readTrace(const std::string& path);
    void readItems(TraceReader& reader, DamageLog& damage);
    void use(TraceItem& item, uint64_t number);
    bool isChosen(const GpsView& message) const;
    Page page();
    void addPictures(Page& page);

    const Arguments& arguments;
    timeStamp_t from = 0;
    timeStamp_t until = std::numeric_limits<timeStamp_t>::max();
    std::vector<struct stat> statuses;
    OutputFile output;
    std::optional<Progress> progress;
    Summary summary;
    FixReader fixes;
    Drive drive;
    std::vector<TraceFile> files;
    DamageNotes damageNotes;
    uint64_t bytesDone = 0;
    bool foundTrace = false;
    ExitStatus status = STATUS_OK;
};

Report::Report(const Arguments& given)
    : arguments(given),
      statuses(inputStatuses(given.traces)),
      output(given.output, given.force, statuses),
      progress(std::in_place, totalSize(statuses)),
      summary(secondsArgument("--gap", given.gap)),
      drive(summary.gapLimit()) {
    if (!given.from.empty()) {
        from = timeArgument("--from", given.from);
    }
    if (!given.until.empty()) {
        until = timeArgument("--until", given.until);
    }
    if (from > until) {
        throw UsageError("--from: is later than --until");
    }
    if (given.output == "-" && isatty(STDOUT_FILENO) != 0) {
        throw UsageError(
            "-o: name a file for the page, such as drive.html; it is not for a terminal");
    }
}

ExitStatus Report::run() {
    for (const std::string& path : arguments.traces) {
        readTrace(path);
    }
    progress.reset();
    if (foundTrace) {
        output.write(page().text());
        output.commit();
    }
    return status;
}

// Of a trace that cannot be read on, what was read counts.
void Report::readTrace(const std::string& path) {
    InputFile input(path);
    TraceReader reader(input);
    DamageLog damage(input.name());
    files.push_back({shortName(input.name()), 0});
    try {
        readItems(reader, damage);
    } catch (const ReadError& error) {
        tell(error.what());
        damageNotes.add(shortName(error.what()));
        status = STATUS_DATA;
    }
    damage.finish();
    summary.endTrace();
    fixes.endTrace();
    files.back().bytes = reader.position();
    bytesDone += reader.position();
    foundTrace |= reader.foundMessage() || reader.position() == 0;
}

void Report::readItems(TraceReader& reader, DamageLog& damage) {
    uint64_t number = 0;
    for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END; item = reader.next()) {
        if (item.kind == TraceItem::Kind::DAMAGE) {
            damage.add(item);
            damageNotes.add(files.back().name, item);
            status = STATUS_DATA;
        } else {
            ++number;
        }
        use(item, number);
        progress->update(bytesDone + reader.position());
    }
}

void Report::use(TraceItem& item, uint64_t number) {
    if (item.kind != TraceItem::Kind::GPS) {
        summary.add(item);
    } else if (isChosen(*item.gps)) {
        const std::optional<Fix> fix = fixes.read(*item.gps);
        summary.add(item, fix);
        if (fix) {
            drive.add(*fix, std::make_unique<GPSTraceMessage>(item.gps->message()), number,
                      files.size() - 1);
        }
    }
}

bool Report::isChosen(const GpsView& message) const {
    return from <= message.getTimeStamp() && message.getTimeStamp() <= until;
}

Page Report::page() {
    Page page;
    page.title = titleOf(files);
    page.span = spanOf(summary);
    page.notes = damageNotes.texts();
    const std::vector<std::string> notes = notesOf(summary);
    page.notes.insert(page.notes.end(), notes.begin(), notes.end());
    if (!arguments.from.empty() || !arguments.until.empty()) {
        page.notes.push_back(
            fmt::format("Only a part of the time was asked for{}{}.",
                        arguments.from.empty() ? "" : ", from " + shownUtc(from),
                        arguments.until.empty() ? "" : ", up to " + shownUtc(until)));
    }
    page.facts = factsOf(summary, files);
    page.sentences = rowsOf(summary.sentences);
    page.sentencesLeftOut = furtherCodes(summary.sentences);
    addPictures(page);
    return page;
}

// They take what the rest of the page leaves.
void Report::addPictures(Page& page) {
    std::vector<std::string> names;
    for (const TraceFile& file : files) {
        names.push_back(file.name);
    }
    const size_t rest = page.text().size() + BYTES_OF_NOTES;
    Drive::Pictures pictures =
        drive.pictures(names, BYTES_OF_TRACK, MOST_BYTES - BYTES_OF_TRACK - rest);
    page.track = std::move(pictures.track);
    page.data = std::move(pictures.data);
    page.thinned = std::move(pictures.leftOut);
}

}  // namespace

void addReport(CLI::App& app, ExitStatus& status) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(
        "report",
        "Writes a page for the browser that shows a drive: track, speed, altitude, satellites.\n"
        "Example: vextrace report -o drive.html drive.trace");
    command->add_option("-o,--output", arguments->output, "file to write; standard output is -");
    command->add_flag("--force", arguments->force, "replace the output where it exists");
    command->add_option("--gap", arguments->gap,
                        "leave lines open behind so many seconds without a fix (5)");
    command->add_option("--from", arguments->from,
                        "leave out what is before this time, such as 2026-11-21T12:35:19Z");
    command->add_option("--until", arguments->until, "leave out what is behind this time");
    command->add_option("TRACE", arguments->traces, "traces, in this order; standard input is -")
        ->required();
    command->callback([arguments, &status] { status = Report(*arguments).run(); });
}

}  // namespace vextrace::tools
