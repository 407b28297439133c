#include "tools/io/signals.h"

#include <gtest/gtest.h>

using namespace vextrace::tools;

TEST(SignalsTest, TheFirstOneCounts) {
    const StopSignals signals;
    EXPECT_EQ(StopSignals::caught(), 0);
    ASSERT_EQ(raise(SIGTERM), 0);
    ASSERT_EQ(raise(SIGINT), 0);
    EXPECT_EQ(StopSignals::caught(), SIGTERM);
    EXPECT_EQ(StopSignals::count(), 2);
}

TEST(SignalsTest, NoneIsLeftForTheNext) {
    {
        const StopSignals signals;
        ASSERT_EQ(raise(SIGTERM), 0);
    }
    EXPECT_EQ(StopSignals::caught(), 0);
    EXPECT_EQ(StopSignals::count(), 0);
}
