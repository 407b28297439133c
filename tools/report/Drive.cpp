#include "tools/report/Drive.h"

#include <fmt/core.h>

#include <utility>

#include "tools/report/TrackPicture.h"
#include "tools/io/markup.h"
#include "tools/report/pageData.h"
#include "tools/report/shownTexts.h"

namespace vextrace::tools {

namespace {

std::string placeHtml(std::string_view content) {
    return fmt::format(
        "<section class=\"place\" aria-labelledby=\"track-heading\">\n"
        "<h2 id=\"track-heading\">Track</h2>\n{}</section>\n",
        content);
}

std::string placeText(const Moment& moment) {
    return moment.texts().position + " at " + shownUtc(moment.fix.stamp);
}

// The place in an online map, for whoever follows the link.
std::string mapLink(const Fix& fix) {
    return fmt::format(
        "<a href=\"https://www.openstreetmap.org/?mlat={0:.6f}&amp;mlon={1:.6f}#map=16/{0:.6f}/"
        "{1:.6f}\" target=\"_blank\" rel=\"noopener noreferrer\">See the start in an online "
        "map</a>",
        *fix.latitude, *fix.longitude);
}

std::string trackHtml(const TrackPicture& picture, const Moment& first, const Moment& last) {
    const std::string start = placeText(first);
    const std::string end = placeText(last);
    return placeHtml(picture.svg(fmt::format("The track, from {} to {}", start, end))) +
           fmt::format(
               "<div class=\"key\">\n{}<dl class=\"ends\"><dt>Start</dt><dd>{}</dd><dt>End</dt>"
               "<dd>{}</dd></dl>\n<p>{}</p>\n</div>\n",
               picture.legend(), html(start), html(end), mapLink(first.fix));
}

}  // namespace

Drive::Drive(timeStamp_t gapLength) : gap(gapLength), series(gapLength) {}

void Drive::add(const Fix& fix, std::unique_ptr<GPSTraceMessage> message, uint64_t number,
                size_t trace) {
    if (fix.isDoubtful() || fix.repeats) {
        return;
    }
    const auto moment = std::make_shared<Moment>(fix, std::move(message), number, trace);
    if (fix.valid) {
        follow(*moment);
        first = first ? first : moment;
        last = moment;
    }
    series.add(moment);
}

void Drive::follow(Moment& moment) {
    const Fix& fix = moment.fix;
    const bool begins = !last;
    moment.eastward = begins ? *fix.longitude : continued(*fix.longitude, last->eastward);
    const bool followsGap =
        !begins && (fix.stamp < last->fix.stamp || fix.stamp - last->fix.stamp > gap);
    track.add({*fix.latitude, moment.eastward, fix.speed, followsGap});
}

// A picture refers to the track, which changes as points are left out.
void Drive::draw(Pictures& pictures, const std::vector<std::string>& traces, size_t bytesOfTrack,
                 size_t bytesOfData) {
    std::optional<TrackPicture> picture;
    if (!first) {
        pictures.track = placeHtml("<p>No fix has a valid position, so there is none.</p>\n");
    } else {
        picture.emplace(track.points());
        pictures.track = trackHtml(*picture, *first, *last);
        while (pictures.track.size() > bytesOfTrack) {
            track.coarsen();
            pictures.track = trackHtml(*picture, *first, *last);
        }
    }
    size_t drawn = 0;
    do {
        const std::vector<Series::Drawn> moments = series.drawn();
        drawn = moments.size();
        pictures.data = pageData(moments, picture ? &*picture : nullptr, traces);
    } while (pictures.data.size() > bytesOfData && series.coarsen());
    pictures.leftOut.push_back(drawnText(drawn));
}

std::string Drive::drawnText(size_t drawn) const {
    if (series.size() == 0) {
        return "There is no fix: no message holds an RMC or a GGA sentence.";
    }
    if (drawn == series.size()) {
        return drawn == 1 ? "There is one fix."
                          : fmt::format("All {} fixes are drawn.", grouped(drawn));
    }
    const std::string numbers =
        fmt::format("{} of {} fixes are drawn: ", grouped(drawn), grouped(series.size()));
    if (series.stretch() == 1) {
        return numbers +
               "of those of one time the first and the last, and those with the least and "
               "the greatest values.";
    }
    return numbers +
           fmt::format(
               "of every {} the first and the last, those with the least and the greatest "
               "values, and both ends of the longest gap. No more can be seen of so long a "
               "time. The options --from and --until of vextrace report show a part of it "
               "in full.",
               shownDuration(series.stretch()));
}

Drive::Pictures Drive::pictures(const std::vector<std::string>& traces, size_t bytesOfTrack,
                                size_t bytesOfData) {
    Pictures pictures;
    draw(pictures, traces, bytesOfTrack, bytesOfData);
    if (track.points().size() < track.size()) {
        pictures.leftOut.push_back(fmt::format(
            "The track is drawn by {} of {} positions: the others lie on the lines between these.",
            grouped(track.points().size()), grouped(track.size())));
    }
    return pictures;
}

}  // namespace vextrace::tools
