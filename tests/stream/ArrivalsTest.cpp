#include "libvexstream/Arrivals.h"

#include <gtest/gtest.h>

using namespace vextrace;

TEST(ArrivalsTest, TellsWhenEachByteArrived) {
    Arrivals arrivals;
    arrivals.note(0, 100);
    arrivals.note(10, 200);
    arrivals.note(20, 300);
    EXPECT_EQ(arrivals.of(0), 100U);
    EXPECT_EQ(arrivals.of(9), 100U);
    EXPECT_EQ(arrivals.of(10), 200U);
    EXPECT_EQ(arrivals.of(19), 200U);
    EXPECT_EQ(arrivals.of(20), 300U);
    EXPECT_EQ(arrivals.of(1000), 300U);
}

TEST(ArrivalsTest, KnowsBytesAsFarBackAsASentenceReaches) {
    Arrivals arrivals;
    for (uint64_t offset = 0; offset <= 2 * MESSAGE_ROOM; offset += MESSAGE_ROOM) {
        arrivals.note(offset, offset + 1);
    }
    EXPECT_EQ(arrivals.of(MESSAGE_ROOM - 1), 1U);
    EXPECT_EQ(arrivals.of(MESSAGE_ROOM), MESSAGE_ROOM + 1);
}
