#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace vextrace::tools {

/// A corner of the track.
struct TrackPoint {
    double latitude;              ///< degrees
    double longitude;             ///< degrees, without a jump at the 180th meridian: may exceed 180
    std::optional<double> speed;  ///< km/h
    bool followsGap;              ///< no line of fixes leads here
};

/// The longitude that is the same place as \p longitude and nearest to \p before.
double continued(double longitude, double before);

/// The way of a drive, thinned to what can be seen in a picture of it, in bounded memory. While
/// there are few points all are kept. Then those are left out that lie on the straight line between
/// their neighbours, or nearly so, measured by the size of the whole picture, and whose speed does
/// not change the colour.
class Track {
public:
    /// A thousandth of the picture's width is about a point of a screen.
    static constexpr double FINEST = 1.0 / 4000;
    /// Colours are about an eighth of the highest speed apart.
    static constexpr double FINEST_SPEED = 1.0 / 64;

    /// \param mostPoints  kept; another number for tests
    explicit Track(size_t mostPoints = 40000) : limit(mostPoints) {}

    /// \param longitude  as continued() from the point before
    void add(const TrackPoint& point);

    /// Leaves out what can be seen a little, at half the precision as the last time. Nothing
    /// happens to a track of two points.
    void coarsen();

    const std::vector<TrackPoint>& points() const { return kept; }

    /// Points added.
    size_t size() const { return added; }

private:
    void thin();

    struct Bounds {
        double south = 0, north = 0, west = 0, east = 0, fastest = 0;
    };

    size_t limit;
    size_t added = 0;
    double tolerance = 1;
    Bounds bounds;
    std::vector<TrackPoint> kept;
};

}  // namespace vextrace::tools
