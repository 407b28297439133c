#include "tools/report/Track.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vextrace::tools {

namespace {

// Bounds the time that a run takes: dividing it takes its square at worst.
constexpr size_t LONGEST_RUN = 2048;

// Tells how far a point is from the line between two others, in units of what can be left out.
class Deviation {
public:
    Deviation(double degrees, double speed, double midLatitude)
        : tolerated(degrees),
          toleratedSpeed(speed),
          eastScale(std::cos(midLatitude * std::numbers::pi / 180)) {}

    double of(const TrackPoint& point, const TrackPoint& from, const TrackPoint& to) const {
        const double x = east(point, from);
        const double y = point.latitude - from.latitude;
        const double dx = east(to, from);
        const double dy = to.latitude - from.latitude;
        const double length = dx * dx + dy * dy;
        const double part = length > 0 ? std::clamp((x * dx + y * dy) / length, 0.0, 1.0) : 0;
        const double asideX = x - part * dx;
        const double asideY = y - part * dy;
        const double way = std::sqrt(asideX * asideX + asideY * asideY);
        const double speed = std::lerp(speedOf(from), speedOf(to), part);
        return std::max(way / tolerated, std::fabs(speedOf(point) - speed) / toleratedSpeed);
    }

private:
    double east(const TrackPoint& point, const TrackPoint& from) const {
        return (point.longitude - from.longitude) * eastScale;
    }
    static double speedOf(const TrackPoint& point) { return point.speed.value_or(0); }

    double tolerated;
    double toleratedSpeed;
    double eastScale;
};

// Marks the points of a run, both ends included, that must stay: divides the run at the point that
// deviates most, and each part likewise, until none deviates.
void markCorners(const std::vector<TrackPoint>& points, size_t first, size_t last,
                 const Deviation& deviation, std::vector<bool>& stays) {
    std::vector<std::pair<size_t, size_t>> runs = {{first, last}};
    stays[first] = stays[last] = true;
    while (!runs.empty()) {
        const auto [from, to] = runs.back();
        runs.pop_back();
        double most = 1;
        size_t corner = from;
        for (size_t i = from + 1; i < to; ++i) {
            const double found = deviation.of(points[i], points[from], points[to]);
            if (found > most) {
                most = found;
                corner = i;
            }
        }
        if (corner != from) {
            stays[corner] = true;
            runs.emplace_back(from, corner);
            runs.emplace_back(corner, to);
        }
    }
}

}  // namespace

double continued(double longitude, double before) {
    return longitude + 360 * std::round((before - longitude) / 360);
}

void Track::add(const TrackPoint& point) {
    if (added++ == 0) {
        bounds = {point.latitude, point.latitude, point.longitude, point.longitude, 0};
    }
    bounds.south = std::min(bounds.south, point.latitude);
    bounds.north = std::max(bounds.north, point.latitude);
    bounds.west = std::min(bounds.west, point.longitude);
    bounds.east = std::max(bounds.east, point.longitude);
    bounds.fastest = std::max(bounds.fastest, point.speed.value_or(0));
    kept.push_back(point);
    if (kept.size() >= limit) {
        thin();
        while (kept.size() > limit / 2) {
            coarsen();
        }
    }
}

void Track::coarsen() {
    tolerance *= 2;
    thin();
}

void Track::thin() {
    const double middle = (bounds.south + bounds.north) / 2;
    const double width = (bounds.east - bounds.west) * std::cos(middle * std::numbers::pi / 180);
    const double extent = std::max({bounds.north - bounds.south, width, 1e-9});
    const double tolerated = extent * FINEST * tolerance;
    const double toleratedSpeed = std::max(bounds.fastest * FINEST_SPEED, 1e-9) * tolerance;
    const Deviation deviation(tolerated, toleratedSpeed, middle);

    // A gap that cannot be seen opens no line.
    for (size_t i = 1; i < kept.size(); ++i) {
        if (kept[i].followsGap && deviation.of(kept[i], kept[i - 1], kept[i - 1]) <= 1) {
            kept[i].followsGap = false;
        }
    }
    std::vector<bool> stays(kept.size());
    for (size_t first = 0; first < kept.size();) {
        size_t last = first;
        while (last + 1 < kept.size() && !kept[last + 1].followsGap && last - first < LONGEST_RUN) {
            ++last;
        }
        markCorners(kept, first, last, deviation, stays);
        first = last + 1 < kept.size() && !kept[last + 1].followsGap ? last : last + 1;
    }
    size_t next = 0;
    for (size_t i = 0; i < kept.size(); ++i) {
        if (stays[i]) {
            kept[next++] = kept[i];
        }
    }
    kept.resize(next);
}

}  // namespace vextrace::tools
