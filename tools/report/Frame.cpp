#include "tools/report/Frame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vextrace::tools {

namespace {

constexpr double RADIAN = 180 / std::numbers::pi;
constexpr double FULL_TURN = 2 * std::numbers::pi;

// A vehicle that stands still is not blown up to the noise of its receiver.
constexpr double SMALLEST_METRES = 20;

// Nobody drives at the poles, where the projection ends.
constexpr double LAST_LATITUDE = 89;

double projectedY(double latitude) {
    const double within = std::clamp(latitude, -LAST_LATITUDE, LAST_LATITUDE);
    return -std::asinh(std::tan(within / RADIAN));
}

}  // namespace

double continued(double longitude, double before) {
    return longitude + 360 * std::round((before - longitude) / 360);
}

void Extent::add(double latitude, double longitude) {
    south = std::min(south, latitude);
    north = std::max(north, latitude);
    west = std::min(west, longitude);
    east = std::max(east, longitude);
}

Area Area::with(const Area& other) const {
    const double x = std::min(left, other.left);
    const double y = std::min(top, other.top);
    return {x, y, std::max(left + width, other.left + other.width) - x,
            std::max(top + height, other.top + other.height) - y};
}

Area Area::beside(const Area& other) const {
    const double turns = std::round((other.left + other.width / 2 - left - width / 2) / FULL_TURN);
    return {left + turns * FULL_TURN, top, width, height};
}

double Area::metres() const {
    constexpr double EQUATOR = 6378137;
    constexpr double ECCENTRICITY_SQUARED = 0.00669437999014;
    const double sine = -std::tanh(top + height / 2);
    return EQUATOR * std::sqrt((1 - sine * sine) / (1 - ECCENTRICITY_SQUARED * sine * sine));
}

Frame::Frame(const Extent& extent)
    : drive({extent.west / RADIAN, projectedY(extent.north), (extent.east - extent.west) / RADIAN,
             projectedY(extent.south) - projectedY(extent.north)}) {
    const double missing = SMALLEST_METRES / drive.metres() - drive.longerSide();
    if (missing > 0) {
        drive = {drive.left - missing / 2, drive.top - missing / 2, drive.width + missing,
                 drive.height + missing};
    }
}

TrackPoint Frame::place(double latitude, double longitude) const {
    return {(longitude / RADIAN - drive.left) / unit(), (projectedY(latitude) - drive.top) / unit(),
            std::nullopt, false};
}

}  // namespace vextrace::tools
