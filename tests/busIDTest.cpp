#include "libvextrace/busID.h"

#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>

namespace {

struct NamedBus {
    busid_t bus;
    int value;
};

constexpr NamedBus BUSES[] = {
    {BUSID_UNKNOWN, 0},     {BUSID_CAN, 1},    {BUSID_SERIAL, 2},         {BUSID_MOST25, 3},
    {BUSID_FLEXRAY, 4},     {BUSID_LIN, 5},    {BUSID_ETHERNET, 6},       {BUSID_CAMERA, 7},
    {BUSID_MOST150, 8},     {BUSID_MOST50, 9}, {BUSID_ANALOG, 10},        {BUSID_CCPXCP, 11},
    {BUSID_GPIO, 12},       {BUSID_GPS, 13},   {BUSID_ECL, 14},           {BUSID_COMPLEXFILTER, 15},
    {BUSID_TTY, 16},        {BUSID_TSA, 17},   {BUSID_LOGGER_INTERN, 18}, {BUSID_MII, 19},
    {BUSID_WAKEUPLINE, 20},
};

}  // namespace

TEST(BusIDTest, NumbersTheKindsOfBus) {
    for (const NamedBus& named : BUSES) {
        EXPECT_EQ(static_cast<int>(named.bus), named.value);
    }
}

TEST(BusIDTest, CountsTheKinds) {
    EXPECT_EQ(static_cast<int>(BUSID_NUM), 21);
    EXPECT_EQ(std::size(BUSES), size_t{BUSID_NUM});
}

// Every int is a value of the type then, with or without a name.
TEST(BusIDTest, HoldsKindsWithoutAName) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<busid_t>, int>));
}
