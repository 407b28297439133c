#include "tools/report/Pictures.h"

#include <fmt/core.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "libvexstream/utc.h"
#include "tools/io/escape.h"
#include "tools/report/TrackPicture.h"
#include "tools/report/pageData.h"
#include "tools/report/shownTexts.h"

namespace vextrace::tools {

namespace {

constexpr size_t MOST_POINTS = 40000;  // of all tracks
constexpr size_t SHORTEST_LINE = 60;

// More cannot be told apart.
constexpr uint64_t MOST_FIXES = 7000;

// Of the stretches, that remain where there are too many.
constexpr double PART = 0.8;

std::string placeHtml(std::string_view content) {
    return fmt::format(
        "<section class=\"place\" aria-labelledby=\"track-heading\">\n"
        "<h2 id=\"track-heading\">Track</h2>\n{}</section>\n",
        content);
}

// The place in an online map, for whoever follows the link.
std::string mapLink(const Fix& fix, std::string_view text) {
    return fmt::format(
        "<a href=\"https://www.openstreetmap.org/?mlat={0:.6f}&amp;mlon={1:.6f}#map=16/{0:.6f}/"
        "{1:.6f}\" target=\"_blank\" rel=\"noopener noreferrer\">{2}</a>",
        *fix.latitude, *fix.longitude, text);
}

std::string legendHtml(std::string_view label, const std::string& items, bool hasGaps) {
    const std::string gaps =
        hasGaps ? "<li><span class=\"swatch dashed\"></span>no fix</li>\n" : "";
    return items.empty() && gaps.empty()
               ? ""
               : fmt::format("<ul class=\"legend\" aria-label=\"{}\">\n{}{}</ul>\n", label, items,
                             gaps);
}

std::string keyOfOne(const DrawnDrive& drive, const TrackPicture& picture) {
    return legendHtml("Colours of the track, by speed", picture.speedLegend(), picture.hasGaps()) +
           fmt::format(
               "<dl class=\"ends\"><dt>Start</dt><dd>{}</dd><dt>End</dt><dd>{}</dd></dl>\n"
               "<p>{}</p>\n",
               html(drive.start), html(drive.end),
               mapLink(drive.first, "See the start in an online map"));
}

std::string spanText(const SurveyedTrace& trace) {
    const std::string span =
        trace.first && hasDate(*trace.first) ? shownSpan(*trace.first, *trace.last) : "no date";
    return fmt::format("{}, {}", span, shownDuration(trace.duration()));
}

// An entry for each drive; the script makes its name a button that leads there.
std::string driveList(const std::vector<DrawnDrive>& drives,
                      const std::vector<SurveyedTrace>& traces) {
    std::string items;
    for (size_t i = 0; i < drives.size(); ++i) {
        const std::string place = drives[i].frame
                                      ? mapLink(drives[i].first, "start in an online map")
                                      : "no valid position";
        items += fmt::format(
            "<li><span class=\"swatch {}\"></span><span class=\"name\" data-drive=\"{}\">{}: "
            "{}</span> <small>{}, {}, {}</small></li>\n",
            driveColour(i), i, i + 1, html(traces[i].name), spanText(traces[i]),
            shownDistance(traces[i].metres), place);
    }
    return fmt::format("<ul class=\"drives\" aria-label=\"Drives\">\n{}</ul>\n", items);
}

std::string trackHtml(const std::vector<DrawnDrive>& drives,
                      const std::vector<SurveyedTrace>& traces, const std::vector<size_t>& groups) {
    const bool isOne = drives.size() == 1;
    const bool hasPlace = std::any_of(drives.begin(), drives.end(),
                                      [](const DrawnDrive& drive) { return drive.frame; });
    if (!hasPlace) {
        return placeHtml("<p>No fix has a valid position, so there is none.</p>\n") +
               (isOne ? "" : "<div class=\"key\">\n" + driveList(drives, traces) + "</div>\n");
    }
    const TrackPicture picture(drives, groups);
    const std::string key = isOne ? keyOfOne(drives[0], picture)
                                  : driveList(drives, traces) +
                                        legendHtml("Lines of the tracks", "", picture.hasGaps());
    return placeHtml(picture.svg(
               isOne ? fmt::format("The track, from {} to {}", drives[0].start, drives[0].end)
                     : fmt::format("The tracks of {} drives", drives.size()))) +
           "<div class=\"key\">\n" + key + "</div>\n";
}

std::string extentText(uint64_t drawn, uint64_t all) {
    if (all == 0) {
        return "There is no fix: no message holds an RMC or a GGA sentence.";
    }
    if (drawn == all) {
        return all == 1 ? "There is one fix."
                        : fmt::format("All {} fixes are drawn.", grouped(all));
    }
    return fmt::format(
        "{} of the {} fixes are drawn, and with them every peak and every gap that a screen can "
        "show; the options --from and --until of vextrace report show a part in full.",
        grouped(drawn), grouped(all));
}

}  // namespace

Drawing::Drawing(const Survey& ofSurvey)
    : survey(ofSurvey), division(ofSurvey.outlines(), MOST_FIXES) {}

bool Drawing::beginTrace() {
    const std::vector<Outline>& outlines = survey.outlines();
    if (drawn.size() == outlines.size()) {
        return false;
    }
    drive.emplace(outlines[drawn.size()], division, survey.summary().gapLimit(),
                  MOST_POINTS / outlines.size());
    return true;
}

void Drawing::add(const Fix& fix, std::span<const uint8_t> message, uint64_t number) {
    drive->add(fix, message, number);
}

void Drawing::endTrace() {
    drawn.push_back(drive->finish());
    drive.reset();
}

Pictures Drawing::finish(size_t bytes, size_t bytesOfTrack) {
    std::vector<uint64_t> fixes;
    for (size_t i = 0; i < drawn.size(); ++i) {
        fixes.push_back(survey.outlines()[i].fixes);
    }
    const std::vector<size_t> groups = neighbourhoods(drawn, fixes);
    Pictures pictures;
    pictures.track = track(groups, bytesOfTrack);
    pictures.data = data(fixes, groups, bytes - pictures.track.size());
    const Summary& numbers = survey.summary();
    const size_t traces = survey.traces().size();
    pictures.extent =
        traces == drawn.size()
            ? ""
            : fmt::format("The first {} of {} drives are drawn; the numbers are those of all. ",
                          drawn.size(), grouped(traces));
    pictures.extent += extentText(moments(), numbers.validFixes + numbers.invalidFixes);
    return pictures;
}

std::string Drawing::track(const std::vector<size_t>& groups, size_t bytes) {
    std::string text = trackHtml(drawn, survey.traces(), groups);
    while (text.size() > bytes) {
        for (DrawnDrive& each : drawn) {
            each.track.coarsen();
        }
        text = trackHtml(drawn, survey.traces(), groups);
    }
    return text;
}

// What can be drawn is known when it is: one moment takes about as many bytes as another.
std::string Drawing::data(const std::vector<uint64_t>& fixes, const std::vector<size_t>& groups,
                          size_t bytes) {
    std::vector<std::string> names;
    for (size_t i = 0; i < drawn.size(); ++i) {
        names.push_back(survey.traces()[i].name);
    }
    uint64_t precision = moments();
    std::string text = pageData(drawn, names, fixes, groups);
    while (text.size() > bytes && precision > 0) {
        precision = std::min(precision - 1, precision * bytes / text.size());
        double part = 1;
        while (moments() > precision && part * MOST_FIXES >= 1) {
            thin(PART);
            part *= PART;
        }
        text = pageData(drawn, names, fixes, groups, SHORTEST_LINE + 2 * precision);
    }
    return text;
}

uint64_t Drawing::moments() const {
    return std::accumulate(
        drawn.begin(), drawn.end(), uint64_t{0},
        [](uint64_t sum, const DrawnDrive& each) { return sum + each.moments.size(); });
}

void Drawing::thin(double part) {
    for (DrawnDrive& each : drawn) {
        each.moments =
            Stretches::thinned(std::move(each.moments), part, survey.summary().gapLimit());
    }
}

}  // namespace vextrace::tools
