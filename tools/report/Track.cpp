#include "tools/report/Track.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vextrace::tools {

namespace {

double distanceOf(const TrackPoint& a, const TrackPoint& b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

}  // namespace

Track::Track(double fastest, size_t mostPoints)
    : speedTolerance(std::max(fastest * FINEST_SPEED, 1e-9)), limit(mostPoints) {}

void Track::add(const TrackPoint& point) {
    append(point);
    while (kept.size() > limit) {
        coarsen();
    }
}

// A gap that cannot be seen opens no line.
void Track::append(const TrackPoint& point) {
    if (kept.empty() || (point.followsGap && !isNear(point))) {
        kept.push_back(point);
        begin(point);
    } else {
        TrackPoint next = point;
        next.followsGap = false;
        if (!hasOpen || !follows(next)) {
            begin(kept.back());
            follows(next);
            kept.push_back(next);
        } else {
            kept.back() = next;
        }
        hasOpen = true;
    }
}

bool Track::isNear(const TrackPoint& point) const {
    return distanceOf(kept.back(), point) <= tolerance;
}

void Track::begin(const TrackPoint& corner) {
    hasOpen = false;
    sight = {};
    sight.slowest = sight.fastest = corner.speed.value_or(0);
}

// Whether a line from the last corner to the point passes near all points between. One that turns
// back does not: the end of the line would lie before them.
bool Track::follows(const TrackPoint& point) {
    const TrackPoint& corner = hasOpen ? kept[kept.size() - 2] : kept.back();
    sight.slowest = std::min(sight.slowest, point.speed.value_or(0));
    sight.fastest = std::max(sight.fastest, point.speed.value_or(0));
    const double distance = distanceOf(corner, point);
    if (sight.fastest - sight.slowest > speedTolerance || distance < sight.farthest - tolerance) {
        return false;
    }
    return distance <= tolerance ||
           narrow(distance, std::atan2(point.y - corner.y, point.x - corner.x));
}

bool Track::narrow(double distance, double direction) {
    const double aside = tolerance / distance;
    if (sight.farthest == 0) {
        sight.direction = direction;
        sight.left = -aside;
        sight.right = aside;
    }
    const double turned = std::remainder(direction - sight.direction, 2 * std::numbers::pi);
    if (turned < sight.left || turned > sight.right) {
        return false;
    }
    sight.left = std::max(sight.left, turned - aside);
    sight.right = std::min(sight.right, turned + aside);
    sight.farthest = std::max(sight.farthest, distance);
    return true;
}

void Track::coarsen() {
    tolerance *= 2;
    speedTolerance *= 2;
    const std::vector<TrackPoint> all = std::exchange(kept, {});
    hasOpen = false;
    for (const TrackPoint& point : all) {
        append(point);
    }
}

}  // namespace vextrace::tools
