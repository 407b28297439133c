#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "libvexstream/Fix.h"
#include "tools/commands/arguments.h"
#include "tools/commands/commands.h"
#include "tools/commands/folders.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Spool.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/standardStreams.h"
#include "tools/report/Page.h"
#include "tools/report/Pictures.h"
#include "tools/report/Survey.h"
#include "tools/report/headText.h"
#include "tools/report/shownTexts.h"
#include "tools/trace/Summary.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

namespace {

// Of the page.
constexpr size_t MOST_BYTES = 1'990'000;
constexpr size_t BYTES_OF_TRACK = 400'000;

// Reads the traces twice: what stands in them is told, and what must be known of the drives; then
// they are drawn.
class Report : public TraceVisitor {
public:
    explicit Report(const ReportCommand& given);

    int run();

    ByteSource& sourceOf(InputFile& input, const std::string& path) override;
    void beginTrace(const std::string& path) override;
    void addMessage(const TraceItem& message, uint64_t /*number*/) override { survey.add(message); }
    void addDamage(const TraceItem& damage) override;
    void addFailure(const std::string& reason) override { damageNotes.add(shortName(reason)); }
    void endTrace(uint64_t bytes) override { survey.endTrace(bytes); }

private:
    // How a trace is read again.
    struct Again {
        std::string path;
        std::unique_ptr<Spool> spool;  // of what cannot be opened again
    };

    Page page() const;
    Pictures pictures(size_t bytes);
    uint64_t draw(size_t trace, Drawing& drawing);
    uint64_t drawItems(ByteSource& source, uint64_t end, Drawing& drawing);
    void tellChange(const std::string& path);

    const ReportCommand& options;
    const Span span;
    Survey survey;
    OutputFile output;
    std::vector<Again> inputs;
    DamageNotes damageNotes;
    bool hasChanged = false;  // a trace, between its two readings
};

Report::Report(const ReportCommand& given)
    : options(given),
      span(spanArgument(given.from, given.until)),
      survey(gapArgument(given.gap)),
      output(given.output, given.force, inputStatuses(given.traces)) {
    if (given.output == "-" && outputIsTerminal()) {
        throw UsageError(
            "-o: name a file for the page, such as drive.html; it is not for a terminal");
    }
}

int Report::run() {
    const Walked walked = walkTraces({options.traces, span}, *this);
    if (walked.foundTrace) {
        Page whole = page();
        Pictures drawn = pictures(MOST_BYTES - whole.text().size());
        whole.track = std::move(drawn.track);
        whole.data = std::move(drawn.data);
        whole.extent = std::move(drawn.extent);
        if (hasChanged) {
            whole.notes.emplace_back(
                "Something changed while it was read: what is drawn is not all that the numbers "
                "tell.");
        }
        output.write(whole.text());
        output.commit();
    }
    return hasChanged ? std::max<int>(walked.status, STATUS_DATA) : walked.status;
}

// Standard input would be at its end when it is opened again.
ByteSource& Report::sourceOf(InputFile& input, const std::string& path) {
    inputs.push_back({path, nullptr});
    if (path != "-" && input.size()) {
        return input;
    }
    inputs.back().spool = std::make_unique<Spool>(input, input.name());
    return *inputs.back().spool;
}

void Report::beginTrace(const std::string& path) {
    survey.beginTrace(shortName(shownName(path)));
}

void Report::addDamage(const TraceItem& damage) {
    survey.add(damage);
    damageNotes.add(survey.traces().back().name, damage);
}

Page Report::page() const {
    const Summary& summary = survey.summary();
    Page page;
    page.title = titleOf(survey.traces());
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
    page.facts = factsOf(summary, survey.traces());
    page.sentences = rowsOf(summary.sentences);
    page.sentencesLeftOut = furtherCodes(summary.sentences);
    return page;
}

// They take what the rest of the page leaves.
Pictures Report::pictures(size_t bytes) {
    Drawing drawing(survey);
    for (size_t i = 0; i < inputs.size() && drawing.beginTrace(); ++i) {
        if (draw(i, drawing) != survey.outlines()[i].fixes) {
            tellChange(inputs[i].path);
        }
        drawing.endTrace();
    }
    return drawing.finish(bytes, BYTES_OF_TRACK);
}

// How many fixes there were. Of a file that is gone there are none.
uint64_t Report::draw(size_t trace, Drawing& drawing) {
    const uint64_t end = survey.traces()[trace].bytes;
    const Again& again = inputs[trace];
    if (again.spool) {
        again.spool->rewind();
        return drawItems(*again.spool, end, drawing);
    }
    try {
        InputFile input(again.path);
        return drawItems(input, end, drawing);
    } catch (const UsageError&) {
        return 0;
    }
}

// A file may have grown meanwhile. Where it cannot be read on it was told.
uint64_t Report::drawItems(ByteSource& source, uint64_t end, Drawing& drawing) {
    TraceReader reader(source);
    FixReader fixes;
    uint64_t number = 0;
    uint64_t count = 0;
    try {
        for (TraceItem item = reader.next();
             item.kind != TraceItem::Kind::END && item.offset + item.length <= end;
             item = reader.next()) {
            number += item.kind == TraceItem::Kind::DAMAGE ? 0 : 1;
            const bool isChosen = item.gps != nullptr && span.holds(item.gps->getTimeStamp());
            const auto fix = isChosen ? fixes.read(*item.gps) : std::nullopt;
            if (fix && isDrawn(*fix)) {
                drawing.add(*fix, item.bytes, number);
                ++count;
            }
        }
    } catch (const ReadError&) {
        return count;
    }
    return count;
}

void Report::tellChange(const std::string& path) {
    tell(shownName(path) + ": changed while it was read");
    hasChanged = true;
}

}  // namespace

int report(const ReportCommand& options) {
    if (isFolder(options.output)) {
        return fillFolder({options.traces, options.output, ".html", options.jobs,
                           [&](const std::string& input, const std::string& output) {
                               ReportCommand one = options;
                               one.traces = {input};
                               one.output = output;
                               return Report(one).run();
                           }});
    }
    return Report(options).run();
}

}  // namespace vextrace::tools
