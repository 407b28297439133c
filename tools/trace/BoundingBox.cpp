#include "tools/trace/BoundingBox.h"

#include <algorithm>
#include <cmath>

namespace vextrace::tools {

void BoundingBox::Range::add(double value) {
    least = std::min(least, value);
    most = std::max(most, value);
}

void BoundingBox::Range::merge(const Range& other) {
    least = std::min(least, other.least);
    most = std::max(most, other.most);
}

void BoundingBox::add(double latitude, double longitude) {
    latitudes.add(latitude);
    const auto sector = static_cast<size_t>(std::max(0.0, std::floor(longitude + 180)));
    sectors[std::min(sector, SECTORS - 1)].add(longitude);
}

std::optional<Box> BoundingBox::box() const {
    if (latitudes.isEmpty()) {
        return std::nullopt;
    }
    Range all;
    for (const Range& sector : sectors) {
        all.merge(sector);
    }
    // The box lies from behind the widest gap to before it; first the gap across the 180th
    // meridian.
    Box box{latitudes.least, all.least, latitudes.most, all.most};
    double widest = all.least + 360 - all.most;
    double last = all.least;
    for (const Range& sector : sectors) {
        if (!sector.isEmpty()) {
            if (sector.least - last > widest) {
                widest = sector.least - last;
                box.west = sector.least;
                box.east = last;
            }
            last = sector.most;
        }
    }
    return box;
}

}  // namespace vextrace::tools
