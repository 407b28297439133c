#include "tools/io/StopSignals.h"

#include <gtest/gtest.h>

using namespace vextrace::tools;

TEST(StopSignalsTest, TheFirstOneCounts) {
    const StopSignals signals;
    EXPECT_EQ(StopSignals::caught(), 0);
    raise(SIGTERM);
    raise(SIGINT);
    EXPECT_EQ(StopSignals::caught(), SIGTERM);
    EXPECT_EQ(StopSignals::count(), 2);
}

TEST(StopSignalsTest, NoneIsLeftForTheNext) {
    {
        const StopSignals signals;
        raise(SIGTERM);
    }
    EXPECT_EQ(StopSignals::caught(), 0);
    EXPECT_EQ(StopSignals::count(), 0);
}
