#include "libvexstream/messageNames.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vextrace {

namespace {

struct NamedId {
    msgid_t id;
    std::string_view name;
};

// In ascending order of the ids.
constexpr NamedId NAMES[] = {{MSGID_MARKER, "MSGID_MARKER"},
                             {MSGID_CAN, "MSGID_CAN"},
                             {MSGID_MOST, "MSGID_MOST"},
                             {MSGID_SERIAL, "MSGID_SERIAL"},
                             {MSGID_ETHERNET_RX, "MSGID_ETHERNET_RX"},
                             {MSGID_FLEXRAY, "MSGID_FLEXRAY"},
                             {MSGID_LIN, "MSGID_LIN"},
                             {MSGID_ETHERNET_TX, "MSGID_ETHERNET_TX"},
                             {MSGID_APIX_ASHELL, "MSGID_APIX_ASHELL"},
                             {MSGID_ECL, "MSGID_ECL"},
                             {MSGID_CAN_EXT, "MSGID_CAN_EXT"},
                             {MSGID_CONTAINER, "MSGID_CONTAINER"},
                             {MSGID_TTY, "MSGID_TTY"},
                             {MSGID_MII, "MSGID_MII"},
                             {MSGID_MOST150, "MSGID_MOST150"},
                             {MSGID_MOST50, "MSGID_MOST50"},
                             {MSGID_ANALOG, "MSGID_ANALOG"},
                             {MSGID_GPIO, "MSGID_GPIO"},
                             {MSGID_MOST25, "MSGID_MOST25"},
                             {MSGID_FLEXRAY_EXT, "MSGID_FLEXRAY_EXT"},
                             {MSGID_GPS, "MSGID_GPS"},
                             {MSGID_CCP_CRO, "MSGID_CCP_CRO"},
                             {MSGID_CCP_DTO, "MSGID_CCP_DTO"},
                             {MSGID_XCP, "MSGID_XCP"},
                             {MSGID_KWP2000_REQUEST, "MSGID_KWP2000_REQUEST"},
                             {MSGID_KWP2000_RESPONSE, "MSGID_KWP2000_RESPONSE"},
                             {MSGID_UDS_REQUEST, "MSGID_UDS_REQUEST"},
                             {MSGID_UDS_RESPONSE, "MSGID_UDS_RESPONSE"},
                             {MSGID_ECU_LOG, "MSGID_ECU_LOG"},
                             {MSGID_PHY_STATUS, "MSGID_PHY_STATUS"},
                             {MSGID_PHY_STATUS_EXT, "MSGID_PHY_STATUS_EXT"},
                             {MSGID_SYSTEMMESSAGE, "MSGID_SYSTEMMESSAGE"},
                             {MSGID_CONFIGURATIONDATA, "MSGID_CONFIGURATIONDATA"},
                             {MSGID_TIMEJUMP, "MSGID_TIMEJUMP"},
                             {MSGID_DATALOGGINGSTOPPED, "MSGID_DATALOGGINGSTOPPED"},
                             {MSGID_DATALOGGINGSTARTED, "MSGID_DATALOGGINGSTARTED"},
                             {MSGID_STARTUP, "MSGID_STARTUP"},
                             {MSGID_SHUTDOWN, "MSGID_SHUTDOWN"},
                             {MSGID_TEMPERATURE, "MSGID_TEMPERATURE"},
                             {MSGID_FILETIME, "MSGID_FILETIME"},
                             {MSGID_TRIGGERCLEAR, "MSGID_TRIGGERCLEAR"},
                             {MSGID_TIMEZONE, "MSGID_TIMEZONE"},
                             {MSGID_MOST_FUNCTION, "MSGID_MOST_FUNCTION"},
                             {MSGID_BAP_FUNCTION, "MSGID_BAP_FUNCTION"},
                             {MSGID_LOST, "MSGID_LOST"},
                             {MSGID_TESTTOOLS, "MSGID_TESTTOOLS"},
                             {MSGID_METAINFO, "MSGID_METAINFO"},
                             {MSGID_LOST_EXT, "MSGID_LOST_EXT"},
                             {MSGID_WRAPPER, "MSGID_WRAPPER"},
                             {MSGID_PADDING, "MSGID_PADDING"},
                             {MSGID_ENDOFFILE, "MSGID_ENDOFFILE"},
                             {MSGID_SLEEPMODE, "MSGID_SLEEPMODE"},
                             {MSGID_GETVERSION, "MSGID_GETVERSION"},
                             {MSGID_VERSION, "MSGID_VERSION"},
                             {MSGID_GETTIME, "MSGID_GETTIME"},
                             {MSGID_TIME, "MSGID_TIME"},
                             {MSGID_PING, "MSGID_PING"},
                             {MSGID_PUSHBUTTON, "MSGID_PUSHBUTTON"},
                             {MSGID_CASCADE, "MSGID_CASCADE"},
                             {MSGID_CAN_PROXY, "MSGID_CAN_PROXY"},
                             {MSGID_BYTESTREAM, "MSGID_BYTESTREAM"},
                             {MSGID_CAN_TRANSPORT, "MSGID_CAN_TRANSPORT"},
                             {MSGID_BUSLOAD, "MSGID_BUSLOAD"},
                             {MSGID_CANSTARTSTOP, "MSGID_CANSTARTSTOP"},
                             {MSGID_ONLINESTREAMINGCONFIG, "MSGID_ONLINESTREAMINGCONFIG"},
                             {MSGID_START, "MSGID_START"},
                             {MSGID_STOP, "MSGID_STOP"},
                             {MSGID_CANLOAD, "MSGID_CANLOAD"},
                             {MSGID_BUSLOADEXT, "MSGID_BUSLOADEXT"},
                             {MSGID_LOGGER_IDENTIFICATION, "MSGID_LOGGER_IDENTIFICATION"},
                             {MSGID_SIGNAL, "MSGID_SIGNAL"},
                             {MSGID_SSCCONFIG, "MSGID_SSCCONFIG"},
                             {MSGID_KEYBOARD, "MSGID_KEYBOARD"},
                             {MSGID_MOSTRECMODE, "MSGID_MOSTRECMODE"},
                             {MSGID_SBC, "MSGID_SBC"},
                             {MSGID_NAS_IDENTIFICATION, "MSGID_NAS_IDENTIFICATION"},
                             {MSGID_NOTIFICATION, "MSGID_NOTIFICATION"},
                             {MSGID_CLOUD, "MSGID_CLOUD"},
                             {MSGID_MOBILE_SERVICE, "MSGID_MOBILE_SERVICE"},
                             {MSGID_LSS, "MSGID_LSS"},
                             {MSGID_ROUTER, "MSGID_ROUTER"},
                             {MSGID_INVALID, "MSGID_INVALID"}};

constexpr uint16_t IN_USE_ELSEWHERE[] = {7, 256, 61440, 61441, 65533};
constexpr uint16_t FIRST_FREE = 0xC000;
constexpr uint16_t LAST_FREE = 0xDFFF;

// A bit per id: resynchronising asks at every byte.
constexpr std::array<uint64_t, 1024> EXPECTED_IDS = [] {
    std::array<uint64_t, 1024> words = {};
    const auto add = [&](uint32_t id) { words[id / 64] |= uint64_t{1} << id % 64; };
    for (const NamedId& named : NAMES) {
        if (named.id != MSGID_INVALID) {
            add(named.id);
        }
    }
    for (const uint16_t id : IN_USE_ELSEWHERE) {
        add(id);
    }
    for (uint32_t id = FIRST_FREE; id <= LAST_FREE; ++id) {
        add(id);
    }
    return words;
}();

}  // namespace

std::string_view messageName(msgid_t id) {
    const auto* const found =
        std::lower_bound(std::begin(NAMES), std::end(NAMES), id,
                         [](const NamedId& named, msgid_t wanted) { return named.id < wanted; });
    return found != std::end(NAMES) && found->id == id ? found->name : std::string_view();
}

bool isExpected(msgid_t id) {
    return (EXPECTED_IDS[id / 64U] >> id % 64U & 1) != 0;
}

}  // namespace vextrace
