#pragma once

#include <optional>

namespace vextrace::tools {

/// How long a path over the ellipsoid is: the sum of the geodesics from each position to the next.
/// What lies between the two ends of a gap is no way that is known, and is summed up apart.
class Path {
public:
    /// Degrees, north and east positive.
    /// \param isBehindGap  whether there is a gap in front of it
    void add(double latitude, double longitude, bool isBehindGap = false);

    /// The next position begins another path; lengths go on adding up.
    void end() { last.reset(); }

    double metres() const { return length; }
    double metresAcrossGaps() const { return lengthAcrossGaps; }

private:
    struct Position {
        double latitude;
        double longitude;
        double x;
        double y;
        double z;
    };

    static double between(const Position& a, const Position& b);

    std::optional<Position> last;
    double length = 0;
    double lengthAcrossGaps = 0;
};

}  // namespace vextrace::tools
