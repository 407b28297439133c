#include "tools/trace/Motion.h"

#include <gtest/gtest.h>

using namespace vextrace;
using namespace vextrace::tools;

namespace motionTest {
namespace {

constexpr timeStamp_t SECOND = 1000000000;
constexpr timeStamp_t GAP = 5 * SECOND;

}  // namespace

TEST(MotionTest, KnowsNothingOfOneFix) {
    Motion motion;
    motion.add(SECOND, 50, GAP);
    EXPECT_EQ(motion.known(), 0U);
    EXPECT_EQ(motion.moving(), 0U);
    EXPECT_FALSE(motion.mean());
    EXPECT_FALSE(motion.meanWhileMoving());
}

TEST(MotionTest, MeansByTime) {
    Motion motion;
    motion.add(0, 10, GAP);
    motion.add(1 * SECOND, 30, GAP);  // 20 km/h
    motion.add(4 * SECOND, 50, GAP);  // 40 km/h for three seconds
    motion.add(5 * SECOND, 0, GAP);   // 25 km/h
    motion.add(10 * SECOND, 0, GAP);  // stands for five seconds
    EXPECT_EQ(motion.known(), 10 * SECOND);
    EXPECT_EQ(motion.moving(), 5 * SECOND);
    EXPECT_DOUBLE_EQ(*motion.mean(), (20 + 3 * 40 + 25) / 10.0);
    EXPECT_DOUBLE_EQ(*motion.meanWhileMoving(), (20 + 3 * 40 + 25) / 5.0);
}

TEST(MotionTest, TakesLittleSpeedForStanding) {
    Motion motion;
    motion.add(0, 1.9, GAP);
    motion.add(SECOND, 1.9, GAP);
    motion.add(2 * SECOND, 2.1, GAP);
    EXPECT_EQ(motion.moving(), SECOND);
}

TEST(MotionTest, LeavesGapsOut) {
    Motion motion;
    motion.add(0, 50, GAP);
    motion.add(GAP, 50, GAP);
    motion.add(2 * GAP + 1, 50, GAP);
    EXPECT_EQ(motion.known(), GAP);
}

TEST(MotionTest, LeavesFixesWithoutSpeedOut) {
    Motion motion;
    motion.add(0, 10, GAP);
    motion.add(SECOND, std::nullopt, GAP);
    motion.add(2 * SECOND, 30, GAP);
    EXPECT_EQ(motion.known(), 2 * SECOND);
    EXPECT_DOUBLE_EQ(*motion.mean(), 20);
}

TEST(MotionTest, LeavesOutWhatGoesBackAndWhatLeadsToAnotherTrace) {
    Motion motion;
    motion.add(10 * SECOND, 50, GAP);
    motion.add(9 * SECOND, 50, GAP);
    EXPECT_EQ(motion.known(), 0U);
    motion.endTrace();
    motion.add(10 * SECOND, 50, GAP);
    EXPECT_EQ(motion.known(), 0U);
}

}  // namespace motionTest
