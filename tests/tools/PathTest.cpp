#include "tools/trace/Path.h"

#include <gtest/gtest.h>

#include <GeographicLib/Geodesic.hpp>
#include <cmath>
#include <random>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

double pathBetween(double latitude1, double longitude1, double latitude2, double longitude2) {
    Path path;
    path.add(latitude1, longitude1);
    path.add(latitude2, longitude2);
    return path.metres();
}

}  // namespace

TEST(PathTest, IsAsLongAsTheGeodesic) {
    constexpr double QUARTER_OF_THE_MERIDIAN = 10'001'965.7293;
    constexpr double EQUATORIAL_RADIUS = 6'378'137;
    EXPECT_NEAR(pathBetween(0, 7, 90, 100), QUARTER_OF_THE_MERIDIAN, 1e-3);
    EXPECT_NEAR(pathBetween(0, 170, 0, -100), EQUATORIAL_RADIUS * M_PI / 2, 1e-3);
    EXPECT_NEAR(pathBetween(0, 179.9999, 0, -179.9999), 22.263898, 1e-6);
    EXPECT_NEAR(pathBetween(90, 0, 90, 123), 0, 1e-6);
}

TEST(PathTest, ShortStepsAreAsExactAsLongOnes) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> latitudes(-89.9, 89.9);
    std::uniform_real_distribution<double> longitudes(-180, 180);
    std::uniform_real_distribution<double> azimuths(-180, 180);
    std::uniform_real_distribution<double> exponents(-2, 4);
    const GeographicLib::Geodesic& earth = GeographicLib::Geodesic::WGS84();
    for (int i = 0; i < 20000; ++i) {
        const double latitude = latitudes(random);
        const double longitude = longitudes(random);
        const double metres = std::pow(10, exponents(random));
        double toLatitude = 0;
        double toLongitude = 0;
        earth.Direct(latitude, longitude, azimuths(random), metres, toLatitude, toLongitude);
        // A hundredth of a micrometre is what degrees as doubles tell apart.
        EXPECT_NEAR(pathBetween(latitude, longitude, toLatitude, toLongitude), metres,
                    1e-9 * metres + 1e-8);
    }
}

TEST(PathTest, AddsUpAndRestsBetweenPaths) {
    Path path;
    path.add(0, 0);
    EXPECT_EQ(path.metres(), 0);
    path.add(0, 1);
    path.add(0, 0);
    const double there = path.metres() / 2;
    EXPECT_NEAR(there, 111319.491, 0.001);
    path.end();
    path.add(45, 90);
    EXPECT_EQ(path.metres(), 2 * there);
    path.add(45, 91, true);
    EXPECT_EQ(path.metres(), 2 * there);
    EXPECT_NEAR(path.metresAcrossGaps(), 78846.335, 0.001);
}
