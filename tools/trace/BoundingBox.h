#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <optional>

namespace vextrace::tools {

/// The smallest box around positions, in degrees, north and east positive. Where it lies across the
/// 180th meridian, west is greater than east.
struct Box {
    double south;
    double west;
    double north;
    double east;
};

/// Collects positions. The longitudes of the box end at the widest stretch without any, so the
/// order in which positions come does not matter.
class BoundingBox {
public:
    void add(double latitude, double longitude);

    /// Nothing without positions.
    std::optional<Box> box() const;

private:
    struct Range {
        double least = std::numeric_limits<double>::infinity();
        double most = -std::numeric_limits<double>::infinity();

        bool isEmpty() const { return least > most; }
        void add(double value);
        void merge(const Range& other);
    };

    static constexpr size_t SECTORS = 360;

    Range latitudes;
    std::array<Range, SECTORS> sectors;  // the longitudes of each degree
};

}  // namespace vextrace::tools
