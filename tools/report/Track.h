#pragma once

#include <cstddef>
#include <vector>

#include "tools/report/Frame.h"

namespace vextrace::tools {

/// The way of a drive, without the points that lie on the straight line between their neighbours,
/// or nearly so, and whose speed does not change the colour.
class Track {
public:
    /// A point of a screen is ten units or more of a picture that is not zoomed.
    static constexpr double FINEST = 1;
    /// Colours are about an eighth of the highest speed apart.
    static constexpr double FINEST_SPEED = 1.0 / 64;

    /// \param fastest     km/h, of the drive
    /// \param mostPoints  kept; where there would be more, more is left out
    Track(double fastest, size_t mostPoints);

    void add(const TrackPoint& point);

    /// Leaves out what can be seen a little, at half the precision as before.
    void coarsen();

    /// The last point among them.
    const std::vector<TrackPoint>& points() const { return kept; }

private:
    // Where the next corner may lie, seen from the last one, so that the line passes near all the
    // points between them.
    struct Sight {
        double direction = 0;  // of the first point that is not near
        double left = 0, right = 0;
        double farthest = 0;
        double slowest = 0, fastest = 0;
    };

    void append(const TrackPoint& point);
    bool isNear(const TrackPoint& point) const;
    bool follows(const TrackPoint& point);
    bool narrow(double distance, double direction);
    void begin(const TrackPoint& corner);

    double tolerance = FINEST;
    double speedTolerance;
    size_t limit;
    std::vector<TrackPoint> kept;  // up to the last corner, and the point that came last
    bool hasOpen = false;          // whether the last of them is no corner yet
    Sight sight;
};

}  // namespace vextrace::tools
