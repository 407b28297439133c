#include "tools/trace/Path.h"

#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/Geodesic.hpp>
#include <cmath>

namespace vextrace::tools {

namespace {

// Up to here the chord, corrected for the curvature, differs from the geodesic by less than 1e-9 of
// it. Receivers that report every second hardly ever move farther between two fixes.
constexpr double SHORT = 2000;
constexpr double MEAN_RADIUS = 6'371'000;

}  // namespace

void Path::add(double latitude, double longitude, bool isBehindGap) {
    Position next{latitude, longitude, 0, 0, 0};
    GeographicLib::Geocentric::WGS84().Forward(latitude, longitude, 0, next.x, next.y, next.z);
    if (last) {
        (isBehindGap ? lengthAcrossGaps : length) += between(*last, next);
    }
    last = next;
}

double Path::between(const Position& a, const Position& b) {
    const double chord = std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y) +
                                   (a.z - b.z) * (a.z - b.z));
    if (chord < SHORT) {
        const double ratio = chord / MEAN_RADIUS;
        return chord * (1 + ratio * ratio / 24);
    }
    double metres = 0;
    GeographicLib::Geodesic::WGS84().Inverse(a.latitude, a.longitude, b.latitude, b.longitude,
                                             metres);
    return metres;
}

}  // namespace vextrace::tools
