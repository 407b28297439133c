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

constexpr size_t MANY = 100000;

TrackPoint at(double x, double y, double speed = 50) {
    return {x, y, speed, false};
}

TrackPoint behindGap(double x, double y) {
    return {x, y, 50, true};
}

std::vector<TrackPoint> trackOf(const std::vector<TrackPoint>& points, size_t most = MANY) {
    Track track(130, most);
    for (const TrackPoint& point : points) {
        track.add(point);
    }
    return track.points();
}

// Laps of a round course.
std::vector<TrackPoint> laps(size_t points, size_t pointsOfLap) {
    std::vector<TrackPoint> result;
    for (size_t i = 0; i < points; ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i % pointsOfLap) /
                             static_cast<double>(pointsOfLap);
        result.push_back(at(5000 + 5000 * std::cos(angle), 4000 + 4000 * std::sin(angle),
                            100 + 20 * std::sin(3 * angle)));
    }
    return result;
}

// From the nearest piece of the track, in units.
double distance(const TrackPoint& point, const std::vector<TrackPoint>& track) {
    double least = 1e9;
    for (size_t i = 1; i < track.size(); ++i) {
        const double dx = track[i].x - track[i - 1].x;
        const double dy = track[i].y - track[i - 1].y;
        const double x = point.x - track[i - 1].x;
        const double y = point.y - track[i - 1].y;
        const double length = dx * dx + dy * dy;
        const double part = length > 0 ? std::clamp((x * dx + y * dy) / length, 0.0, 1.0) : 0;
        least = std::min(least, std::hypot(x - part * dx, y - part * dy));
    }
    return least;
}

}  // namespace

TEST(TrackTest, LeavesOutWhatLiesOnAStraightLine) {
    std::vector<TrackPoint> points;
    for (int i = 0; i < 60; ++i) {
        points.push_back(at(i * 100, 0));
    }
    for (int i = 1; i < 40; ++i) {
        points.push_back(at(5900, i * 100));
    }
    const auto kept = trackOf(points);
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(kept[0].x, 0);
    EXPECT_EQ(kept[1].x, 5900);
    EXPECT_EQ(kept[1].y, 0);
    EXPECT_EQ(kept[2].y, 3900);
}

TEST(TrackTest, KeepsTheEndOfARoadThatIsDrivenBack) {
    const auto kept = trackOf({at(0, 0), at(50, 0), at(100, 0), at(60, 0), at(30, 0), at(10, 0)});
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(kept[1].x, 100);
    EXPECT_EQ(kept[2].x, 10);
}

TEST(TrackTest, KeepsAPeakOfSpeed) {
    std::vector<TrackPoint> points;
    for (int i = 0; i < 10000; ++i) {
        points.push_back(at(i, 0, i == 7777 ? 130 : 50));
    }
    const auto kept = trackOf(points);
    EXPECT_EQ(std::count_if(kept.begin(), kept.end(),
                            [](const TrackPoint& point) { return point.speed == 130; }),
              1);
    EXPECT_LT(kept.size(), 10U);
}

TEST(TrackTest, StaysCloseToEveryPoint) {
    const auto all = laps(3000, 1000);
    const auto kept = trackOf(all);
    EXPECT_LT(kept.size(), 1500U);
    for (const TrackPoint& point : all) {
        EXPECT_LE(distance(point, kept), 2 * Track::FINEST);
    }
}

TEST(TrackTest, StaysCloseToEveryPointOfManyLaps) {
    const auto all = laps(100000, 1000);
    const auto kept = trackOf(all, 5000);
    EXPECT_LE(kept.size(), 5000U);
    for (size_t i = 0; i < all.size(); i += 97) {
        EXPECT_LT(distance(all[i], kept), Frame::UNITS / 250) << i;
    }
}

TEST(TrackTest, StaysCloseToEveryPointOfAWildDrive) {
    std::mt19937 random(3);
    std::vector<TrackPoint> all = {at(0, 0)};
    for (int i = 0; i < 2000; ++i) {
        const auto step = [&] { return static_cast<double>(random() % 41) / 10 - 2; };
        all.push_back(at(all.back().x + step(), all.back().y + step()));
    }
    const auto kept = trackOf(all);
    for (const TrackPoint& point : all) {
        EXPECT_LE(distance(point, kept), 2 * Track::FINEST);
    }
}

TEST(TrackTest, KeepsGaps) {
    std::vector<TrackPoint> points;
    for (int i = 0; i < 100; ++i) {
        points.push_back(i == 50 ? behindGap(5500, 0) : at(i * 100 + (i < 50 ? 0 : 500), 0));
    }
    const auto kept = trackOf(points);
    ASSERT_EQ(kept.size(), 4U);
    EXPECT_EQ(kept[1].x, 4900);
    EXPECT_EQ(kept[2].x, 5500);
    EXPECT_TRUE(kept[2].followsGap);
    EXPECT_FALSE(kept[3].followsGap);
}

TEST(TrackTest, ClosesGapsThatCannotBeSeen) {
    const auto kept = trackOf({at(0, 0), at(100, 0), behindGap(100.5, 0), at(200, 0)});
    EXPECT_EQ(kept.size(), 2U);
    EXPECT_FALSE(kept[1].followsGap);
}

TEST(TrackTest, KeepsWithinItsLimitWhateverComes) {
    std::mt19937 random(1);
    Track track(100, 200);
    for (int i = 0; i < 20000; ++i) {
        const auto number = [&] { return static_cast<double>(random() % 100000) / 10; };
        track.add({number(), number(), number() / 100, random() % 2 == 0});
        ASSERT_LE(track.points().size(), 200U);
    }
}

TEST(TrackTest, CoarsensDownToItsEnds) {
    Track track(120, MANY);
    for (const TrackPoint& point : laps(3000, 700)) {
        track.add(point);
    }
    for (int i = 0; i < 30; ++i) {
        track.coarsen();
    }
    EXPECT_LE(track.points().size(), 4U);
    EXPECT_EQ(track.points().front().x, 10000);
}

TEST(TrackTest, EndsAtItsLastPoint) {
    const auto all = laps(1234, 700);
    EXPECT_EQ(trackOf(all).back().x, all.back().x);
    EXPECT_EQ(trackOf({at(1, 2)}).size(), 1U);
}
