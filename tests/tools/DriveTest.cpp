#include "tools/report/Drive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "drawnDrives.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace driveTest {
namespace {

constexpr timeStamp_t SECOND = 1000000000;
constexpr timeStamp_t GAP = 5 * SECOND;

Outline outlineOf(uint64_t fixes, timeStamp_t pause) {
    Outline outline(GAP);
    for (uint64_t i = 0; i < fixes; ++i) {
        outline.add(fixAt(i * pause));
    }
    return outline;
}

}  // namespace

TEST(DriveTest, OutlinesWhatThereIs) {
    Outline outline(GAP);
    outline.add(placeAt(48, 179.5, 60));
    Fix second = placeAt(47, -179.5, 90);
    second.stamp += 3 * SECOND;
    outline.add(second);
    Fix invalid = fixAt(second.stamp + 60 * SECOND, 500);
    invalid.valid = false;
    outline.add(invalid);
    EXPECT_EQ(outline.fixes, 3U);
    EXPECT_EQ(outline.recorded, 8 * SECOND);
    EXPECT_EQ(outline.fastest, 90);
    EXPECT_EQ(outline.extent->south, 47);
    EXPECT_EQ(outline.extent->north, 48);
    EXPECT_EQ(outline.extent->west, 179.5);
    EXPECT_EQ(outline.extent->east, 180.5);
}

TEST(DriveTest, HasAStretchForEachOfFewFixes) {
    Division division({outlineOf(3, SECOND), outlineOf(2, SECOND)}, 5);
    std::set<uint64_t> stretches;
    for (int i = 0; i < 5; ++i) {
        stretches.insert(division.next(SECOND));
    }
    EXPECT_EQ(stretches.size(), 5U);
}

// A tenth of the time has as many fixes as the rest.
TEST(DriveTest, DividesFixesAndTimeAlike) {
    std::vector<Outline> outlines = {outlineOf(10000, SECOND / 10), outlineOf(10000, SECOND)};
    Division division(outlines, 5000);
    std::set<uint64_t> fast;
    std::set<uint64_t> slow;
    for (int i = 0; i < 10000; ++i) {
        fast.insert(division.next(SECOND / 10));
    }
    for (int i = 0; i < 10000; ++i) {
        slow.insert(division.next(SECOND));
    }
    EXPECT_NEAR(static_cast<double>(fast.size()), 1000 * (0.25 + 0.5 / 11), 2);
    EXPECT_NEAR(static_cast<double>(slow.size()), 1000 * (0.25 + 5.0 / 11), 2);
}

TEST(DriveTest, KeepsAPeakAndALowOfOneSecondInADay) {
    std::vector<Fix> fixes;
    for (timeStamp_t second = 0; second < 86400; ++second) {
        fixes.push_back(fixAt(second * SECOND));
    }
    fixes[34567].speed = 130;
    fixes[45678].speed = 0;
    fixes[56789].satellites = 0;
    const DrawnDrive drive = drawn({fixes}, GAP, 500)[0];
    const auto count = [&](auto condition) {
        return std::count_if(drive.moments.begin(), drive.moments.end(),
                             [&](const Moment& moment) { return condition(moment.fix); });
    };
    EXPECT_LT(drive.moments.size(), 500U);
    EXPECT_EQ(count([](const Fix& fix) { return fix.speed == 130; }), 1);
    EXPECT_EQ(count([](const Fix& fix) { return fix.speed == 0; }), 1);
    EXPECT_EQ(count([](const Fix& fix) { return fix.satellites == 0U; }), 1);
}

TEST(DriveTest, TellsPlacesAndTheWay) {
    Fix first = placeAt(48, 11);
    first.stamp = 1795264519 * SECOND;
    Fix none = placeAt(0, 0);
    none.valid = false;
    none.stamp = first.stamp + SECOND;
    Fix last = placeAt(48.01, 11);
    last.stamp = first.stamp + 2 * SECOND;
    const DrawnDrive drive = drawn({{first, none, last}})[0];
    ASSERT_EQ(drive.moments.size(), 3U);
    EXPECT_EQ(drive.start, "48°0.000 N, 11°0.000 E at 2026-11-21 12:35:19 UTC");
    EXPECT_EQ(drive.end, "48°0.600 N, 11°0.000 E at 2026-11-21 12:35:21 UTC");
    EXPECT_EQ(drive.moments[0].way, 0);
    EXPECT_EQ(drive.moments[1].way, 0);
    EXPECT_NEAR(drive.moments[2].way, 1112, 1);
    EXPECT_NEAR(drive.moments[0].y, Frame::UNITS, 1e-6);
    EXPECT_NEAR(drive.moments[2].y, 0, 1e-6);
}

TEST(DriveTest, HasNoFrameWithoutAValidFix) {
    Fix none = fixAt(SECOND);
    none.valid = false;
    const DrawnDrive drive = drawn({{none}})[0];
    EXPECT_FALSE(drive.frame);
    EXPECT_TRUE(drive.track.points().empty());
    EXPECT_EQ(drive.moments.size(), 1U);
    EXPECT_EQ(drive.start, "");
}

// As of a file that has grown since it was outlined.
TEST(DriveTest, TakesMoreThanItsOutlineTold) {
    const std::vector<Outline> outlines = {Outline(GAP)};
    Division division(outlines, 10);
    Drive drive(outlines[0], division, GAP, 100);
    drive.add(fixAt(SECOND), messageAt(SECOND), 1);
    EXPECT_EQ(drive.finish().moments.size(), 1U);
}

}  // namespace driveTest
