#include "libvextrace/internal/NmeaCoordinate.h"

#include <gtest/gtest.h>

#include "tests/support/doubleBits.h"

using vextrace::internal::NmeaCoordinate;
using vextrace::internal::NmeaNumberReader;

TEST(NmeaCoordinateTest, TakesACoordinateApart) {
    const NmeaNumberReader number;
    const struct {
        const char* text;
        uint16_t deg;
        double rem;
    } cases[] = {
        {"4807.038", 48, 4807.038 - 4800},
        {"01131.000", 11, 31},
        {"18000.0", 180, 0},
        {"12.5", 0, 12.5},
        {"-99.5", 0, -99.5},
        {"-100", 65535, -6553600},
        {"-4807.038", 65488, -4807.038 - 6548800},
        {"6553599.5", 65535, 99.5},
        {"6553600.0", 0, 6553600},
        {"4861.5", 48, 61.5},
        {"north", 0, 0},
        {"", 0, 0},
    };
    for (const auto& c : cases) {
        const NmeaCoordinate coordinate(number, c.text);
        EXPECT_EQ(coordinate.deg, c.deg) << c.text;
        EXPECT_EQ(bitsOf(coordinate.rem), bitsOf(c.rem)) << c.text;
    }
}

TEST(NmeaCoordinateTest, PutsACoordinateTogether) {
    const NmeaNumberReader number;
    EXPECT_EQ(bitsOf(NmeaCoordinate(number, "4807.038").degrees()), 0x40480F03AFB7E90FU);
    EXPECT_EQ(NmeaCoordinate(number, "4890").degrees(), 49.5);
    EXPECT_EQ(NmeaCoordinate(number, "18000.0").degrees(), 180.0);
    EXPECT_EQ(NmeaCoordinate(number, "").degrees(), 0.0);
}
