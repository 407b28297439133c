#include "tools/report/Frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

constexpr double RADIAN = 180 / std::numbers::pi;

Extent extentOf(double latitude, double longitude) {
    return {latitude, latitude, longitude, longitude};
}

// A kilometre to the north and to the east.
void expectEqualScales(double latitude, double longitude) {
    constexpr double METRES_OF_DEGREE = 111195;
    const double north = 1000 / METRES_OF_DEGREE;
    const double east = north / std::cos(latitude / RADIAN);
    Extent extent = extentOf(latitude, longitude);
    extent.add(latitude + north, longitude + east);
    const Frame frame(extent);
    const TrackPoint start = frame.place(latitude, longitude);
    const TrackPoint end = frame.place(latitude + north, longitude + east);
    EXPECT_NEAR(end.x - start.x, start.y - end.y, (end.x - start.x) * 0.002);
    EXPECT_NEAR((end.x - start.x) * frame.unit() * frame.area().metres(), 1000, 10);
}

}  // namespace

TEST(FrameTest, HasTheSameScaleInBothDirections) {
    expectEqualScales(0, 0);
    expectEqualScales(48, 11);
    expectEqualScales(-33, 151);
    expectEqualScales(69, -179.99);
}

TEST(FrameTest, HasAsManyUnitsForEveryDrive) {
    for (const double size : {0.001, 1.0, 100.0}) {
        Extent extent = extentOf(-10, 11);
        extent.add(-10, 11 + size);
        const Frame frame(extent);
        EXPECT_NEAR(frame.place(-10, 11).x, 0, 1e-6);
        EXPECT_NEAR(frame.place(-10, 11 + size).x, Frame::UNITS, 1e-6);
        EXPECT_NEAR(frame.place(-10, 11).y, 0, 1e-6);
    }
}

TEST(FrameTest, GivesAVehicleThatStandsTwentyMetres) {
    const Frame frame(extentOf(48, 11));
    EXPECT_NEAR(frame.area().width * frame.area().metres(), 20, 0.001);
    EXPECT_NEAR(frame.area().height, frame.area().width, 1e-12);
    EXPECT_NEAR(frame.place(48, 11).x, Frame::UNITS / 2.0, 1e-3);
    EXPECT_NEAR(frame.place(48, 11).y, Frame::UNITS / 2.0, 1e-3);
}

TEST(FrameTest, HoldsThePoles) {
    Extent extent = extentOf(-90, 0);
    extent.add(90, 1);
    const Frame frame(extent);
    EXPECT_NEAR(frame.place(90, 0).y, 0, 1e-6);
    EXPECT_NEAR(frame.place(-90, 0).y, Frame::UNITS, 1e-6);
}

TEST(FrameTest, JoinsAreas) {
    const Area joined = Area{1, 2, 3, 4}.with({-1, 5, 1, 10});
    EXPECT_EQ(joined.left, -1);
    EXPECT_EQ(joined.top, 2);
    EXPECT_EQ(joined.width, 5);
    EXPECT_EQ(joined.height, 13);
}

TEST(FrameTest, PutsNeighboursBesideEachOtherOverThe180thMeridian) {
    const Area west = {-3.1, 0, 0.1, 0.1};
    const Area east = {3.0, 0, 0.1, 0.1};
    EXPECT_NEAR(west.beside(east).left, 2 * std::numbers::pi - 3.1, 1e-12);
    EXPECT_NEAR(east.beside(west).left, 3.0 - 2 * std::numbers::pi, 1e-12);
    EXPECT_EQ(east.beside(east).left, 3.0);
}

// By the ellipsoid: a degree at the equator has 111,320 m, at 60 degrees 55,800 m.
TEST(FrameTest, KnowsTheMetresOfARadian) {
    EXPECT_NEAR((Area{0, 0, 0, 0}.metres()) / RADIAN, 111320, 1);
    const double y = -std::asinh(std::tan(60 / RADIAN));
    EXPECT_NEAR((Area{0, y, 0, 0}.metres()) / RADIAN, 55800, 1);
}

TEST(FrameTest, ContinuesLongitudesOverThe180thMeridian) {
    EXPECT_NEAR(continued(-179.9, 179.9), 180.1, 1e-9);
    EXPECT_NEAR(continued(179.9, -179.9), -180.1, 1e-9);
    EXPECT_NEAR(continued(-179.9, 539.9), 540.1, 1e-9);
    EXPECT_EQ(continued(11.5, 11.4), 11.5);
    EXPECT_EQ(continued(11.5, -160), 11.5);
}
