#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "libvexstream/Fix.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/standardStreams.h"
#include "tools/report/Drive.h"
#include "tools/report/Page.h"
#include "tools/report/headText.h"
#include "tools/report/shownTexts.h"
#include "tools/trace/Summary.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

namespace {

// Of the page.
constexpr size_t MOST_BYTES = 1'990'000;
constexpr size_t BYTES_OF_TRACK = 400'000;
constexpr size_t BYTES_OF_NOTES = 2'000;  // on what is left out

class Report : public TraceVisitor {
public:
    explicit Report(const ReportCommand& given);

    int run();

    void beginTrace(const std::string& path) override;
    void addMessage(const TraceItem& message, uint64_t number) override;
    void addDamage(const TraceItem& damage) override;
    void addFailure(const std::string& reason) override { damageNotes.add(shortName(reason)); }
    void endTrace(uint64_t bytes) override;

private:
    Page page();
    void addPictures(Page& page);

    const ReportCommand& options;
    const Span span;
    Summary summary;
    OutputFile output;
    FixReader fixes;
    Drive drive;
    std::vector<TraceFile> files;
    DamageNotes damageNotes;
};

Report::Report(const ReportCommand& given)
    : options(given),
      span(spanArgument(given.from, given.until)),
      summary(secondsArgument("--gap", given.gap)),
      output(given.output, given.force, inputStatuses(given.traces)),
      drive(summary.gapLimit()) {
    if (given.output == "-" && outputIsTerminal()) {
        throw UsageError(
            "-o: name a file for the page, such as drive.html; it is not for a terminal");
    }
}

int Report::run() {
    const Walked walked = walkTraces({options.traces, span}, *this);
    if (walked.foundTrace) {
        output.write(page().text());
        output.commit();
    }
    return walked.status;
}

void Report::beginTrace(const std::string& path) {
    files.push_back({shortName(shownName(path)), 0});
}

void Report::addMessage(const TraceItem& message, uint64_t number) {
    if (message.kind != TraceItem::Kind::GPS) {
        summary.add(message, std::nullopt);
        return;
    }
    const std::optional<Fix> fix = fixes.read(*message.gps);
    summary.add(message, fix);
    if (fix) {
        drive.add(*fix, std::make_unique<GPSTraceMessage>(message.gps->message()), number,
                  files.size() - 1);
    }
}

void Report::addDamage(const TraceItem& damage) {
    summary.add(damage, std::nullopt);
    damageNotes.add(files.back().name, damage);
}

void Report::endTrace(uint64_t bytes) {
    summary.endTrace();
    fixes.endTrace();
    files.back().bytes = bytes;
}

Page Report::page() {
    Page page;
    page.title = titleOf(files);
    page.span = spanOf(summary);
    page.notes = damageNotes.texts();
    const std::vector<std::string> notes = notesOf(summary);
    page.notes.insert(page.notes.end(), notes.begin(), notes.end());
    if (!options.from.empty() || !options.until.empty()) {
        page.notes.push_back(
            fmt::format("Only a part of the time was asked for{}{}.",
                        options.from.empty() ? "" : ", from " + shownUtc(span.from),
                        options.until.empty() ? "" : ", up to " + shownUtc(span.until)));
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

int report(const ReportCommand& options) {
    return Report(options).run();
}

}  // namespace vextrace::tools
