#pragma once

#include <optional>
#include <vector>

namespace vextrace::tools {

/// A corner of the track.
struct TrackPoint {
    double x, y;                  ///< in the units of the drive's frame, to the east and the south
    std::optional<double> speed;  ///< km/h
    bool followsGap;              ///< no line of fixes leads here
};

/// The longitude that is the same place as \p longitude and nearest to \p before.
double continued(double longitude, double before);

/// The north and the east of positions, in degrees, both ends included.
struct Extent {
    double south, north, west, east;

    /// \param longitude  as continued() from the position before
    void add(double latitude, double longitude);
};

/// A rectangle of the map: Mercator's projection in radians, x to the east and y to the south.
struct Area {
    double left, top, width, height;

    double longerSide() const { return width > height ? width : height; }

    /// The smallest that holds both.
    Area with(const Area& other) const;

    /// The same place, a turn of the earth away where that is nearer to the other.
    Area beside(const Area& other) const;

    /// Metres to the east of a radian at its middle.
    double metres() const;
};

/// The coordinates that a drive is drawn in: its longer side has UNITS of them, wherever and
/// however long it is, so that whole numbers tell all that can be seen.
class Frame {
public:
    static constexpr int UNITS = 10000;

    explicit Frame(const Extent& extent);

    /// \param longitude  as continued() from those of the extent
    TrackPoint place(double latitude, double longitude) const;

    /// The drive on the map; a vehicle that stands has some room about it.
    const Area& area() const { return drive; }

    /// Radians of a unit.
    double unit() const { return drive.longerSide() / UNITS; }

private:
    Area drive;
};

}  // namespace vextrace::tools
