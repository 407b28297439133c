#include "tools/report/TrackPicture.h"

#include <fmt/core.h>

#include <GeographicLib/Geodesic.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numbers>
#include <string_view>

#include "tools/io/markup.h"

namespace vextrace::tools {

namespace {

// Around the track there is room for the marks, below it for the scale bar.
constexpr int MARGIN = 700;
constexpr int MARGIN_BELOW = 1300;

// A vehicle that stands still is not blown up to the noise of its receiver.
constexpr double SMALLEST_METRES = 20;
constexpr double EARTH_RADIUS = 6371000;

// Nobody drives at the poles, where the projection ends.
constexpr double LAST_LATITUDE = 89;

constexpr size_t COLOURS = 8;

double projectedX(double longitude) {
    return longitude * std::numbers::pi / 180;
}

double projectedY(double latitude) {
    const double within = std::clamp(latitude, -LAST_LATITUDE, LAST_LATITUDE);
    return std::asinh(std::tan(within * std::numbers::pi / 180));
}

double latitudeOf(double y) {
    return std::atan(std::sinh(y)) * 180 / std::numbers::pi;
}

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

// The lines of one colour.
class PathText {
public:
    using Spot = TrackPicture::Spot;

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

// Marks keep their size on the screen: the script sets the factor when the picture is zoomed or is
// smaller than this expects.
constexpr int UNITS_PER_PIXEL = 14;

std::string mark(std::string_view id, TrackPicture::Spot spot, std::string_view content) {
    return fmt::format(
        "<g id=\"{}\" class=\"mark\" data-x=\"{}\" data-y=\"{}\" transform=\"translate({} {}) "
        "scale({})\">{}</g>\n",
        id, spot.x, spot.y, spot.x, spot.y, UNITS_PER_PIXEL, content);
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

TrackPicture::TrackPicture(const std::vector<TrackPoint>& ofTrack)
    : points(ofTrack), speeds([&] {
          double fastest = 0;
          for (const TrackPoint& point : ofTrack) {
              fastest = std::max(fastest, point.speed.value_or(0));
          }
          return fastest;
      }()) {
    double west = projectedX(points[0].longitude);
    double east = west;
    double south = projectedY(points[0].latitude);
    double north = south;
    for (const TrackPoint& point : points) {
        west = std::min(west, projectedX(point.longitude));
        east = std::max(east, projectedX(point.longitude));
        south = std::min(south, projectedY(point.latitude));
        north = std::max(north, projectedY(point.latitude));
    }
    middleX = (west + east) / 2;
    middleY = (south + north) / 2;
    const double latitude = latitudeOf(middleY);
    const double smallest =
        SMALLEST_METRES / (EARTH_RADIUS * std::cos(latitude * std::numbers::pi / 180));
    scale = std::min((WIDTH - 2 * MARGIN) / std::max(east - west, smallest),
                     (HEIGHT - MARGIN - MARGIN_BELOW) / std::max(north - south, smallest));

    // Over a thousandth of a degree a geodesic is as good as the parallel.
    constexpr double SHORT = 0.001;
    const double longitude = std::remainder(middleX * 180 / std::numbers::pi, 360.0);
    GeographicLib::Geodesic::WGS84().Inverse(latitude, longitude, latitude, longitude + SHORT,
                                             metres);
    metres /= projectedX(SHORT) * scale;
}

TrackPicture::Spot TrackPicture::spot(double latitude, double longitude) const {
    const double x = (projectedX(longitude) - middleX) * scale;
    const double y = (middleY - projectedY(latitude)) * scale;
    return {static_cast<int>(std::lround(WIDTH / 2.0 + x)),
            static_cast<int>(std::lround((MARGIN + HEIGHT - MARGIN_BELOW) / 2.0 + y))};
}

std::string TrackPicture::lines() const {
    std::vector<PathText> paths(speeds.steps() + 1);
    for (size_t i = 0; i < points.size(); ++i) {
        const bool begins = i == 0 || points[i].followsGap;
        const bool ends = i + 1 == points.size() || points[i + 1].followsGap;
        if (begins && !ends) {
            continue;
        }
        const TrackPoint& from = begins ? points[i] : points[i - 1];
        const auto speed = fasterEnd(from, points[i]);
        paths[speed ? speeds.index(*speed) : speeds.steps()].line(
            spot(from.latitude, from.longitude), spot(points[i].latitude, points[i].longitude));
    }
    std::string defined;
    std::string casings;
    std::string drawn;
    for (size_t i = 0; i < paths.size(); ++i) {
        if (!paths[i].str().empty()) {
            const std::string colour = i < speeds.steps() ? speeds.colour(i) : "unknown";
            defined +=
                fmt::format("<path class=\"stroke\" id=\"line{}\" d=\"{}\"/>\n", i, paths[i].str());
            casings += fmt::format(R"(<use href="#line{}"/>)", i);
            drawn += fmt::format(R"(<use href="#line{}" class="{}"/>)", i, colour);
        }
    }
    return fmt::format(
        "<defs>\n{}</defs>\n<path class=\"stroke\" id=\"chosen\" d=\"\"/>\n<g "
        "class=\"casing\">{}</g>\n"
        "<g class=\"lines\">{}</g>\n",
        defined, casings, drawn);
}

std::string TrackPicture::gaps() const {
    std::string text;
    for (size_t i = 1; i < points.size(); ++i) {
        if (points[i].followsGap) {
            const Spot from = spot(points[i - 1].latitude, points[i - 1].longitude);
            const Spot to = spot(points[i].latitude, points[i].longitude);
            fmt::format_to(std::back_inserter(text), "M{} {}L{} {}", from.x, from.y, to.x, to.y);
        }
    }
    return text.empty() ? text : fmt::format("<path class=\"stroke gap\" d=\"{}\"/>\n", text);
}

// A round length at the lower left, about a quarter of the picture wide.
std::string TrackPicture::scaleBar() const {
    const double length = roundDown(metres * WIDTH / 4);
    const auto units = std::lround(length / metres);
    const std::string text =
        length >= 1000 ? fmt::format("{} km", length / 1000) : fmt::format("{} m", length);
    return fmt::format(
        "<g id=\"scale\">\n<path class=\"stroke\" id=\"scale-bar\" d=\"M300 "
        "{}v150h{}v-150\"/>\n{}</g>\n",
        HEIGHT - 450, units,
        mark("scale-text", {300, HEIGHT - 450},
             fmt::format(R"(<text y="-6" id="scale-length">{}</text>)", text)));
}

// The names of the ends stand on the sides where the other end is not.
std::string TrackPicture::endMarks() const {
    constexpr int ABOVE = -12;
    constexpr int BELOW = 24;
    const Spot start = spot(points.front().latitude, points.front().longitude);
    const Spot end = spot(points.back().latitude, points.back().longitude);
    const bool startsAbove = start.y <= end.y;
    return mark("start", start,
                fmt::format(R"(<circle r="6"/><text y="{}">Start</text>)",
                            startsAbove ? ABOVE : BELOW)) +
           mark(
               "end", end,
               fmt::format(R"(<rect x="-5" y="-5" width="10" height="10"/><text y="{}">End</text>)",
                           startsAbove ? BELOW : ABOVE));
}

std::string TrackPicture::svg(const std::string& description) const {
    return fmt::format("<svg id=\"track\" viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"{}\">\n",
                       WIDTH, HEIGHT, html(description)) +
           gaps() + lines() + endMarks() +
           mark("here", spot(points.front().latitude, points.front().longitude),
                R"(<circle class="ring" r="9"/><circle class="dot" r="3"/>)") +
           mark("north", {WIDTH - 400, 500},
                R"(<path d="M0-16l7 18-7-4-7 4z"/><text y="16">N</text>)") +
           scaleBar() + "</svg>\n";
}

std::string TrackPicture::legend() const {
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
    if (!gaps().empty()) {
        items += "<li><span class=\"swatch dashed\"></span>no fix</li>\n";
    }
    return fmt::format(
        "<ul class=\"legend\" aria-label=\"Colours of the track, by speed\">\n"
        "<li>Speed, km/h</li>\n{}</ul>\n",
        items);
}

}  // namespace vextrace::tools
