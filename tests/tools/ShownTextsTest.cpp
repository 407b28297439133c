#include "tools/report/shownTexts.h"

#include <gtest/gtest.h>

using namespace vextrace;
using namespace vextrace::tools;

namespace shownTextsTest {
namespace {
constexpr uint64_t SECOND = 1000000000;
constexpr timeStamp_t NOON = 1795262400 * SECOND;  // 2026-11-21 12:00:00
}  // namespace

TEST(ShownTextsTest, GroupsDigitsByThree) {
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(6048000), "6,048,000");
    EXPECT_EQ(grouped(18446744073709551615U), "18,446,744,073,709,551,615");
}

TEST(ShownTextsTest, WritesTimes) {
    EXPECT_EQ(shownUtc(NOON), "2026-11-21 12:00:00 UTC");
    EXPECT_EQ(shownUtc(NOON + 250000000), "2026-11-21 12:00:00.25 UTC");
}

TEST(ShownTextsTest, WritesTheDateOfASpanOnce) {
    EXPECT_EQ(shownSpan(NOON, NOON + 3661 * SECOND), "2026-11-21 12:00:00 to 13:01:01 UTC");
    EXPECT_EQ(shownSpan(NOON, NOON + 86400 * SECOND),
              "2026-11-21 12:00:00 to 2026-11-22 12:00:00 UTC");
}

TEST(ShownTextsTest, WritesDurationsInUnitsThatFit) {
    EXPECT_EQ(shownDuration(0), "0 s");
    EXPECT_EQ(shownDuration(2500000000), "2.5 s");
    EXPECT_EQ(shownDuration(5 * SECOND), "5 s");
    EXPECT_EQ(shownDuration(9990000000), "10 s");
    EXPECT_EQ(shownDuration(59 * SECOND), "59 s");
    EXPECT_EQ(shownDuration(61 * SECOND), "1 min 01 s");
    EXPECT_EQ(shownDuration(3600 * SECOND), "1 h 00 min 00 s");
    EXPECT_EQ(shownDuration(90061 * SECOND), "1 d 1 h 01 min 01 s");
}

TEST(ShownTextsTest, WritesDistancesInUnitsThatFit) {
    EXPECT_EQ(shownDistance(0), "0 m");
    EXPECT_EQ(shownDistance(999.4), "999 m");
    EXPECT_EQ(shownDistance(999.5), "1.00 km");
    EXPECT_EQ(shownDistance(99994), "99.99 km");
    EXPECT_EQ(shownDistance(99995), "100 km");
    EXPECT_EQ(shownDistance(20550700), "20,551 km");
    EXPECT_EQ(shownDistance(12345), "12.35 km");
    EXPECT_EQ(shownDistance(123456), "123 km");
}

TEST(ShownTextsTest, WritesSizesInUnitsThatFit) {
    EXPECT_EQ(shownSize(999), "999 bytes");
    EXPECT_EQ(shownSize(1234), "1.2 kB");
    EXPECT_EQ(shownSize(53326), "53 kB");
    EXPECT_EQ(shownSize(999600), "1.0 MB");
    EXPECT_EQ(shownSize(4500000000), "4.5 GB");
}

}  // namespace shownTextsTest
