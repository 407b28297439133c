#pragma once

#include <optional>

namespace vextrace::tools {

/// How long a path over the ellipsoid is: the sum of the geodesics from each position to the next.
class Path {
public:
    /// Degrees, north and east positive.
    void add(double latitude, double longitude);

    /// The next position begins another path; lengths go on adding up.
    void end() { last.reset(); }

    double metres() const { return length; }
    void addMetres(double metres) { length += metres; }

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
};

}  // namespace vextrace::tools
