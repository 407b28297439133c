#include "tools/report/TrackPicture.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numeric>
#include <string_view>

#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

// Around the track there is room for the marks, below it for the scale bar.
constexpr int MARGIN = 700;
constexpr int MARGIN_BELOW = 1300;

constexpr size_t COLOURS = 8;

// A drive that is a smaller part of a picture is no more than a dot.
constexpr double SMALLEST_PART = 1.0 / 50;

// Of a vehicle that hardly moves more of the land is shown, for the sake of the other drives.
constexpr double REGION = 1000;  // metres

// The greatest of 1, 2, 5, 10, 20, ... that is not above the value.
double roundDown(double value) {
    const double power = std::pow(10, std::floor(std::log10(value)));
    for (const double factor : {5.0, 2.0}) {
        if (factor * power <= value) {
            return factor * power;
        }
    }
    return power;
}

// Of the speeds at the ends of a piece the greater one, so that no peak is hidden.
std::optional<double> fasterEnd(const TrackPoint& a, const TrackPoint& b) {
    return a.speed && b.speed ? std::max(*a.speed, *b.speed) : a.speed ? a.speed : b.speed;
}

struct Corner {
    long x, y;
};

Corner cornerOf(const TrackPoint& point) {
    return {std::lround(point.x), std::lround(point.y)};
}

// The lines of one colour.
class PathText {
public:
    using Spot = Corner;

    void line(Spot from, Spot to) {
        if (text.empty() || from.x != end.x || from.y != end.y) {
            fmt::format_to(std::back_inserter(text), "M{} {}l", from.x, from.y);
        } else if (from.x == to.x && from.y == to.y) {
            return;
        } else if (to.x >= from.x) {
            text += ' ';
        }
        fmt::format_to(std::back_inserter(text), "{}{}{}", to.x - from.x, to.y < from.y ? "" : " ",
                       to.y - from.y);
        end = to;
    }

    const std::string& str() const { return text; }

private:
    std::string text;
    Spot end = {};
};

// Marks keep their size on the screen: the script sets the factor where the picture is smaller than
// this expects.
constexpr int UNITS_PER_PIXEL = 14;

std::string markAt(std::string_view attributes, double x, double y, std::string_view content) {
    return fmt::format("<g {} transform=\"translate({:.0f} {:.0f}) scale({})\">{}</g>\n",
                       attributes, x, y, UNITS_PER_PIXEL, content);
}

std::string gapsOf(const std::vector<TrackPoint>& points) {
    std::string text;
    for (size_t i = 1; i < points.size(); ++i) {
        if (points[i].followsGap) {
            const Corner from = cornerOf(points[i - 1]);
            const Corner to = cornerOf(points[i]);
            fmt::format_to(std::back_inserter(text), "M{} {}L{} {}", from.x, from.y, to.x, to.y);
        }
    }
    return text.empty() ? text : fmt::format("<path class=\"stroke gap\" d=\"{}\"/>\n", text);
}

// The lines of the track by their colours; the last is that of points without any.
std::vector<PathText> pathsOf(const std::vector<TrackPoint>& points, const SpeedScale& speeds) {
    std::vector<PathText> paths(speeds.steps() + 1);
    for (size_t i = 0; i < points.size(); ++i) {
        const bool begins = i == 0 || points[i].followsGap;
        const bool ends = i + 1 == points.size() || points[i + 1].followsGap;
        if (begins && !ends) {
            continue;
        }
        const TrackPoint& from = begins ? points[i] : points[i - 1];
        const auto speed = fasterEnd(from, points[i]);
        paths[speed ? speeds.index(*speed) : speeds.steps()].line(cornerOf(from),
                                                                  cornerOf(points[i]));
    }
    return paths;
}

double fastestOf(const std::vector<TrackPoint>& points) {
    double fastest = 0;
    for (const TrackPoint& point : points) {
        fastest = std::max(fastest, point.speed.value_or(0));
    }
    return fastest;
}

}  // namespace

SpeedScale::SpeedScale(double fastest) {
    static constexpr std::array FACTORS = {2.0, 2.5, 2.0};  // 1, 2, 5, 10
    for (size_t i = 0; std::ceil(fastest / width) > MOST_STEPS; ++i) {
        width *= FACTORS[i % FACTORS.size()];
    }
    count = std::max<size_t>(1, static_cast<size_t>(std::ceil(fastest / width)));
}

size_t SpeedScale::index(double speed) const {
    return std::min(static_cast<size_t>(std::max(speed, 0.0) / width), count - 1);
}

std::string SpeedScale::colour(size_t index) const {
    const size_t last = std::max<size_t>(count - 1, 1);
    return fmt::format("s{}", (index * (COLOURS - 1) + last / 2) / last);
}

std::string driveColour(size_t drive) {
    return fmt::format("d{} p{}", drive % COLOURS, drive / COLOURS % 3);
}

std::vector<size_t> neighbourhoods(const std::vector<DrawnDrive>& drives,
                                   const std::vector<uint64_t>& fixes) {
    std::vector<size_t> order(drives.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return fixes[a] > fixes[b]; });
    std::vector<size_t> groups(drives.size());
    std::erase_if(order, [&](size_t i) { return !drives[i].frame; });
    for (size_t group = 0; !order.empty(); ++group) {
        Area all = drives[order.front()].frame->area();
        const double widest = std::max(all.longerSide(), REGION / all.metres()) / SMALLEST_PART;
        std::erase_if(order, [&](size_t i) {
            const Area joined = all.with(drives[i].frame->area().beside(all));
            if (joined.longerSide() > widest) {
                return false;
            }
            all = joined;
            groups[i] = group;
            return true;
        });
    }
    return groups;
}

TrackPicture::TrackPicture(const std::vector<DrawnDrive>& ofDrives,
                           const std::vector<size_t>& groups)
    : drives(ofDrives), speeds(isOne() ? fastestOf(ofDrives[0].track.points()) : 0) {
    for (size_t i = 0; i < drives.size(); ++i) {
        if (drives[i].frame && groups[i] == 0) {
            const Area& area = drives[i].frame->area();
            shown = shown.width > 0 || shown.height > 0 ? shown.with(area.beside(shown)) : area;
        }
    }
    scale = std::min((WIDTH - 2 * MARGIN) / std::max(shown.width, 1e-12),
                     (HEIGHT - MARGIN - MARGIN_BELOW) / std::max(shown.height, 1e-12));
}

TrackPicture::Spot TrackPicture::spot(const DrawnDrive& drive, const TrackPoint& point) const {
    const Area area = drive.frame->area().beside(shown);
    const double x = area.left + point.x * drive.frame->unit() - shown.left - shown.width / 2;
    const double y = area.top + point.y * drive.frame->unit() - shown.top - shown.height / 2;
    return {WIDTH / 2.0 + x * scale, (MARGIN + HEIGHT - MARGIN_BELOW) / 2.0 + y * scale};
}

std::string TrackPicture::lines(size_t index) const {
    const DrawnDrive& drive = drives[index];
    const std::vector<PathText> paths = pathsOf(drive.track.points(), speeds);
    std::string defined;
    std::string casings;
    std::string drawn;
    for (size_t i = 0; i < paths.size(); ++i) {
        if (!paths[i].str().empty()) {
            const std::string colour = !isOne()             ? driveColour(index)
                                       : i < speeds.steps() ? speeds.colour(i)
                                                            : "unknown";
            defined += fmt::format("<path class=\"stroke\" id=\"line{}-{}\" d=\"{}\"/>\n", index, i,
                                   paths[i].str());
            casings += fmt::format("<use href=\"#line{}-{}\"/>", index, i);
            drawn += fmt::format(R"(<use href="#line{}-{}" class="{}"/>)", index, i, colour);
        }
    }
    const Spot corner = spot(drive, {0, 0, std::nullopt, false});
    return fmt::format(
        "<g class=\"drive-lines\" data-drive=\"{}\" transform=\"translate({:.2f} {:.2f}) "
        "scale({:.6g})\">\n{}<defs>\n{}</defs>\n<g class=\"casing\">{}</g>\n<g "
        "class=\"lines\">{}</g>\n</g>\n",
        index, corner.x, corner.y, drive.frame->unit() * scale, gapsOf(drive.track.points()),
        defined, casings, drawn);
}

bool TrackPicture::hasGaps() const {
    return std::any_of(drives.begin(), drives.end(), [](const DrawnDrive& drive) {
        return !gapsOf(drive.track.points()).empty();
    });
}

// A round length at the lower left, about a quarter of the picture wide.
std::string TrackPicture::scaleBar() const {
    const double metresPerUnit = shown.metres() / scale;
    const double length = roundDown(metresPerUnit * WIDTH / 4);
    const std::string text =
        length >= 1000 ? fmt::format("{} km", length / 1000) : fmt::format("{} m", length);
    return fmt::format(
        "<g id=\"scale\">\n<path class=\"stroke\" id=\"scale-bar\" d=\"M300 "
        "{}v150h{:.0f}v-150\"/>\n{}</g>\n",
        HEIGHT - 450, length / metresPerUnit,
        markAt(R"(id="scale-text" class="mark")", 300, HEIGHT - 450,
               fmt::format(R"(<text y="-6" id="scale-length">{}</text>)", text)));
}

// The names of the ends stand on the sides where the other end is not. Of several drives the number
// stands at the start.
std::string TrackPicture::endMarks(size_t index) const {
    constexpr int ABOVE = -12;
    constexpr int BELOW = 24;
    constexpr int ASIDE = 8;  // of drives that begin at one place
    const DrawnDrive& drive = drives[index];
    const TrackPoint& first = drive.track.points().front();
    const TrackPoint& last = drive.track.points().back();
    const bool startsAbove = first.y <= last.y;
    const auto mark = [&](std::string_view id, const TrackPoint& point, std::string_view content) {
        const Spot at = spot(drive, point);
        return markAt(
            fmt::format(R"(id="{}{}" class="mark" data-drive="{}" data-x="{:.0f}" data-y="{:.0f}")",
                        id, index, index, point.x, point.y),
            at.x, at.y, content);
    };
    return mark("end", last,
                fmt::format(R"(<rect x="-5" y="-5" width="10" height="10"/><text y="{}">{}</text>)",
                            startsAbove ? BELOW : ABOVE, isOne() ? "End" : "")) +
           mark("start", first,
                fmt::format(R"(<circle r="6"/><text x="{}" y="{}">{}</text>)",
                            isOne()          ? 0
                            : index % 2 == 0 ? -ASIDE
                                             : ASIDE,
                            startsAbove ? ABOVE : BELOW,
                            isOne() ? "Start" : std::to_string(index + 1)));
}

std::string TrackPicture::svg(const std::string& description) const {
    std::string tracks;
    std::string marks;
    for (size_t i = 0; i < drives.size(); ++i) {
        if (drives[i].frame) {
            tracks += lines(i);
            marks += endMarks(i);
        }
    }
    return fmt::format("<svg id=\"track\" viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"{}\">\n",
                       WIDTH, HEIGHT, html(description)) +
           "<path class=\"stroke\" id=\"chosen\" d=\"\"/>\n" + tracks + marks +
           markAt(R"(id="here" class="mark here")", -WIDTH, 0,
                  R"(<circle class="ring" r="9"/><circle class="dot" r="3"/>)") +
           markAt(R"(id="north" class="mark")", WIDTH - 400, 500,
                  R"(<path d="M0-16l7 18-7-4-7 4z"/><text y="16">N</text>)") +
           scaleBar() + "</svg>\n";
}

std::string TrackPicture::speedLegend() const {
    const std::vector<TrackPoint>& points = drives[0].track.points();
    const bool known = std::any_of(points.begin(), points.end(),
                                   [](const TrackPoint& point) { return point.speed.has_value(); });
    if (!known) {
        return "";
    }
    std::string items;
    for (size_t i = 0; i < speeds.steps(); ++i) {
        items += fmt::format("<li><span class=\"swatch {}\"></span>{:.0f} to {:.0f}</li>\n",
                             speeds.colour(i), speeds.step() * static_cast<double>(i),
                             speeds.step() * static_cast<double>(i + 1));
    }
    return "<li>Speed, km/h</li>\n" + items;
}

}  // namespace vextrace::tools
