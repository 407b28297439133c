#include "libvextrace/messageID.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

struct NamedID {
    msgid_t id;
    unsigned value;
};

constexpr NamedID BUS_TRAFFIC[] = {
    {MSGID_MARKER, 0},
    {MSGID_CAN, 1},
    {MSGID_MOST, 2},
    {MSGID_SERIAL, 3},
    {MSGID_ETHERNET_RX, 4},
    {MSGID_FLEXRAY, 5},
    {MSGID_LIN, 6},
    {MSGID_ETHERNET_TX, 8},
    {MSGID_APIX_ASHELL, 9},
    {MSGID_ECL, 10},
    {MSGID_CAN_EXT, 11},
    {MSGID_CONTAINER, 12},
    {MSGID_TTY, 13},
    {MSGID_MII, 14},
    {MSGID_MOST150, 16},
    {MSGID_MOST50, 17},
    {MSGID_ANALOG, 18},
    {MSGID_GPIO, 19},
    {MSGID_MOST25, 20},
    {MSGID_FLEXRAY_EXT, 21},
    {MSGID_GPS, 22},
    {MSGID_CCP_CRO, 23},
    {MSGID_CCP_DTO, 24},
    {MSGID_XCP, 25},
    {MSGID_KWP2000_REQUEST, 26},
    {MSGID_KWP2000_RESPONSE, 27},
    {MSGID_UDS_REQUEST, 28},
    {MSGID_UDS_RESPONSE, 29},
    {MSGID_ECU_LOG, 30},
    {MSGID_PHY_STATUS, 31},
    {MSGID_PHY_STATUS_EXT, 32},
};

constexpr NamedID LOGGER_EVENTS[] = {
    {MSGID_SYSTEMMESSAGE, 128},
    {MSGID_CONFIGURATIONDATA, 129},
    {MSGID_TIMEJUMP, 130},
    {MSGID_DATALOGGINGSTOPPED, 131},
    {MSGID_DATALOGGINGSTARTED, 132},
    {MSGID_STARTUP, 133},
    {MSGID_SHUTDOWN, 134},
    {MSGID_TEMPERATURE, 135},
    {MSGID_FILETIME, 136},
    {MSGID_TRIGGERCLEAR, 137},
    {MSGID_TIMEZONE, 138},
    {MSGID_MOST_FUNCTION, 144},
    {MSGID_BAP_FUNCTION, 145},
    {MSGID_LOST, 146},
    {MSGID_TESTTOOLS, 147},
    {MSGID_METAINFO, 148},
    {MSGID_LOST_EXT, 149},
    {MSGID_WRAPPER, 253},
    {MSGID_PADDING, 254},
    {MSGID_ENDOFFILE, 255},
    {MSGID_SLEEPMODE, 257},
};

constexpr NamedID CONTROL_AND_ONLINE[] = {
    {MSGID_GETVERSION, 32771},
    {MSGID_VERSION, 32772},
    {MSGID_GETTIME, 32773},
    {MSGID_TIME, 32774},
    {MSGID_PING, 32776},
    {MSGID_PUSHBUTTON, 32783},
    {MSGID_CASCADE, 32784},
    {MSGID_CAN_PROXY, 32786},
    {MSGID_BYTESTREAM, 32787},
    {MSGID_CAN_TRANSPORT, 32788},
    {MSGID_BUSLOAD, 32789},
    {MSGID_CANSTARTSTOP, 32792},
    {MSGID_ONLINESTREAMINGCONFIG, 32796},
    {MSGID_START, 32800},
    {MSGID_STOP, 32801},
    {MSGID_CANLOAD, 32802},
    {MSGID_BUSLOADEXT, 32804},
    {MSGID_LOGGER_IDENTIFICATION, 32805},
    {MSGID_SIGNAL, 32806},
    {MSGID_SSCCONFIG, 32816},
    {MSGID_KEYBOARD, 32817},
    {MSGID_MOSTRECMODE, 32819},
    {MSGID_SBC, 32822},
    {MSGID_NAS_IDENTIFICATION, 32823},
    {MSGID_NOTIFICATION, 32824},
    {MSGID_CLOUD, 32825},
    {MSGID_MOBILE_SERVICE, 32826},
    {MSGID_LSS, 32827},
    {MSGID_ROUTER, 65534},
    {MSGID_INVALID, 65535},
};

template <size_t COUNT>
void expectValues(const NamedID (&table)[COUNT]) {
    for (const NamedID& named : table) {
        EXPECT_EQ(unsigned{named.id}, named.value);
    }
}

}  // namespace

TEST(MessageIDTest, NumbersTheBusTraffic) {
    expectValues(BUS_TRAFFIC);
}

TEST(MessageIDTest, NumbersTheLoggerEvents) {
    expectValues(LOGGER_EVENTS);
}

TEST(MessageIDTest, NumbersTheControlAndOnlineMessages) {
    expectValues(CONTROL_AND_ONLINE);
}

TEST(MessageIDTest, Is16BitsWide) {
    EXPECT_EQ(sizeof(msgid_t), 2U);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<msgid_t>, uint16_t>));
}

TEST(MessageIDTest, NamesNoneOfTheIDsForTypesOfOnesOwn) {
    const auto isFree = [](unsigned value) { return value >= 0xC000 && value <= 0xDFFF; };
    for (const NamedID& named : CONTROL_AND_ONLINE) {
        EXPECT_FALSE(isFree(named.value)) << named.value;
    }
    for (const NamedID& named : LOGGER_EVENTS) {
        EXPECT_FALSE(isFree(named.value)) << named.value;
    }
}

TEST(MessageIDTest, HoldsIDsWithoutAName) {
    for (const unsigned value : {7U, 256U, 49152U, 57343U, 61440U, 61441U, 65533U}) {
        EXPECT_EQ(unsigned{static_cast<msgid_t>(value)}, value);
    }
}
