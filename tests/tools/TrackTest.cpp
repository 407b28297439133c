#include "tools/report/Track.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

TrackPoint at(double latitude, double longitude, double speed = 50) {
    return {latitude, longitude, speed, false};
}

// Laps of a round course.
std::vector<TrackPoint> laps(size_t points, size_t pointsOfLap) {
    std::vector<TrackPoint> result;
    for (size_t i = 0; i < points; ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i % pointsOfLap) /
                             static_cast<double>(pointsOfLap);
        result.push_back(at(48 + 0.01 * std::sin(angle), 11 + 0.015 * std::cos(angle),
                            100 + 20 * std::sin(3 * angle)));
    }
    return result;
}

// Distance in degrees of latitude from the nearest piece of the track.
double distance(const TrackPoint& point, const std::vector<TrackPoint>& track, double eastScale) {
    double least = 1e9;
    for (size_t i = 1; i < track.size(); ++i) {
        const double dx = (track[i].longitude - track[i - 1].longitude) * eastScale;
        const double dy = track[i].latitude - track[i - 1].latitude;
        const double x = (point.longitude - track[i - 1].longitude) * eastScale;
        const double y = point.latitude - track[i - 1].latitude;
        const double length = dx * dx + dy * dy;
        const double part = length > 0 ? std::clamp((x * dx + y * dy) / length, 0.0, 1.0) : 0;
        least = std::min(least, std::hypot(x - part * dx, y - part * dy));
    }
    return least;
}

}  // namespace

TEST(TrackTest, KeepsAllPointsWhileTheyAreFew) {
    Track track(100);
    for (int i = 0; i < 99; ++i) {
        track.add(at(48, 11 + i * 0.001));
    }
    EXPECT_EQ(track.points().size(), 99U);
    EXPECT_EQ(track.size(), 99U);
}

TEST(TrackTest, LeavesOutWhatLiesOnAStraightLine) {
    Track track(100);
    for (int i = 0; i < 60; ++i) {
        track.add(at(48, 11 + i * 0.001));
    }
    for (int i = 0; i < 40; ++i) {
        track.add(at(48 + i * 0.001, 11.06));
    }
    const auto& points = track.points();
    ASSERT_EQ(points.size(), 3U);
    EXPECT_EQ(points[0].longitude, 11);
    EXPECT_EQ(points[1].longitude, 11.06);
    EXPECT_EQ(points[1].latitude, 48);
    EXPECT_NEAR(points[2].latitude, 48.039, 1e-9);
    EXPECT_EQ(track.size(), 100U);
}

TEST(TrackTest, KeepsAPeakOfSpeed) {
    Track track(1000);
    for (int i = 0; i < 100000; ++i) {
        track.add(at(48, 11 + i * 0.00001, i == 77777 ? 130 : 50));
    }
    const auto isPeak = [](const TrackPoint& point) { return point.speed == 130; };
    EXPECT_EQ(std::count_if(track.points().begin(), track.points().end(), isPeak), 1);
    EXPECT_LT(track.points().size(), 1000U);
}

TEST(TrackTest, StaysCloseToEveryPointOfManyLaps) {
    const auto all = laps(100000, 1000);
    Track track(5000);
    for (const TrackPoint& point : all) {
        track.add(point);
    }
    EXPECT_LT(track.points().size(), 5000U);
    const double eastScale = std::cos(48 * std::numbers::pi / 180);
    const double extent = 0.02;
    for (size_t i = 0; i < all.size(); i += 97) {
        EXPECT_LT(distance(all[i], track.points(), eastScale), extent / 500) << i;
    }
}

TEST(TrackTest, KeepsGaps) {
    Track track(100);
    for (int i = 0; i < 100; ++i) {
        TrackPoint point = at(48, 11 + i * 0.001 + (i < 50 ? 0 : 0.05));
        point.followsGap = i == 50;
        track.add(point);
    }
    const auto& points = track.points();
    ASSERT_EQ(points.size(), 4U);
    EXPECT_NEAR(points[1].longitude, 11.049, 1e-9);
    EXPECT_NEAR(points[2].longitude, 11.1, 1e-9);
    EXPECT_TRUE(points[2].followsGap);
    EXPECT_FALSE(points[3].followsGap);
}

TEST(TrackTest, ClosesGapsThatCannotBeSeen) {
    Track track(100);
    for (int i = 0; i < 100; ++i) {
        TrackPoint point = at(48, 11 + i * 0.001 + (i < 50 ? 0 : -0.0009999));
        point.followsGap = i == 50;
        track.add(point);
    }
    for (const TrackPoint& point : track.points()) {
        EXPECT_FALSE(point.followsGap);
    }
    EXPECT_EQ(track.points().size(), 2U);
}

TEST(TrackTest, KeepsWithinItsLimitWhateverComes) {
    std::mt19937 random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same everywhere
    Track track(200);
    for (int i = 0; i < 20000; ++i) {
        const auto number = [&] { return static_cast<double>(random() % 100000) / 1000; };
        track.add({number() - 50, number(), number(), random() % 2 == 0});
        ASSERT_LT(track.points().size(), 200U);
    }
}

TEST(TrackTest, CoarsensDownToItsEnds) {
    Track track;
    for (const TrackPoint& point : laps(3000, 700)) {
        track.add(point);
    }
    for (int i = 0; i < 30; ++i) {
        track.coarsen();
    }
    EXPECT_LE(track.points().size(), 4U);
    EXPECT_EQ(track.points().front().longitude, 11.015);
}

TEST(TrackTest, ContinuesLongitudesOverThe180thMeridian) {
    EXPECT_NEAR(continued(-179.9, 179.9), 180.1, 1e-9);
    EXPECT_NEAR(continued(179.9, -179.9), -180.1, 1e-9);
    EXPECT_NEAR(continued(-179.9, 539.9), 540.1, 1e-9);
    EXPECT_EQ(continued(11.5, 11.4), 11.5);
    EXPECT_EQ(continued(11.5, -160), 11.5);
}
