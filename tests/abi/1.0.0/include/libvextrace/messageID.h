/// \file
/// The types of trace message.
#pragma once

#include <cstdint>

/// Type of a trace message; 16 bits wide, as in the header of the serialised form. Other values
/// than the named ones may occur in a trace. This library decodes MSGID_GPS; the others are the ids
/// of types that may live beside it.
enum msgid_t : uint16_t {
    // Bus traffic
    MSGID_MARKER = 0,             ///< marker
    MSGID_CAN = 1,                ///< CAN
    MSGID_MOST = 2,               ///< MOST
    MSGID_SERIAL = 3,             ///< serial line
    MSGID_ETHERNET_RX = 4,        ///< Ethernet, received
    MSGID_FLEXRAY = 5,            ///< FlexRay
    MSGID_LIN = 6,                ///< LIN
    MSGID_ETHERNET_TX = 8,        ///< Ethernet, transmitted
    MSGID_APIX_ASHELL = 9,        ///< APIX AShell
    MSGID_ECL = 10,               ///< ECL
    MSGID_CAN_EXT = 11,           ///< CAN, extended
    MSGID_CONTAINER = 12,         ///< container
    MSGID_TTY = 13,               ///< TTY
    MSGID_MII = 14,               ///< MII
    MSGID_MOST150 = 16,           ///< MOST150
    MSGID_MOST50 = 17,            ///< MOST50
    MSGID_ANALOG = 18,            ///< analogue input
    MSGID_GPIO = 19,              ///< GPIO
    MSGID_MOST25 = 20,            ///< MOST25
    MSGID_FLEXRAY_EXT = 21,       ///< FlexRay, extended
    MSGID_GPS = 22,               ///< GPS receiver, see GPSTraceMessage
    MSGID_CCP_CRO = 23,           ///< CCP, CRO
    MSGID_CCP_DTO = 24,           ///< CCP, DTO
    MSGID_XCP = 25,               ///< XCP
    MSGID_KWP2000_REQUEST = 26,   ///< KWP2000 request
    MSGID_KWP2000_RESPONSE = 27,  ///< KWP2000 response
    MSGID_UDS_REQUEST = 28,       ///< UDS request
    MSGID_UDS_RESPONSE = 29,      ///< UDS response
    MSGID_ECU_LOG = 30,           ///< log of an ECU
    MSGID_PHY_STATUS = 31,        ///< PHY status
    MSGID_PHY_STATUS_EXT = 32,    ///< PHY status, extended

    // Logger events
    MSGID_SYSTEMMESSAGE = 128,       ///< system message
    MSGID_CONFIGURATIONDATA = 129,   ///< configuration data
    MSGID_TIMEJUMP = 130,            ///< time jump
    MSGID_DATALOGGINGSTOPPED = 131,  ///< data logging stopped
    MSGID_DATALOGGINGSTARTED = 132,  ///< data logging started
    MSGID_STARTUP = 133,             ///< start-up
    MSGID_SHUTDOWN = 134,            ///< shutdown
    MSGID_TEMPERATURE = 135,         ///< temperature
    MSGID_FILETIME = 136,            ///< file time
    MSGID_TRIGGERCLEAR = 137,        ///< trigger clear
    MSGID_TIMEZONE = 138,            ///< time zone
    MSGID_MOST_FUNCTION = 144,       ///< MOST function
    MSGID_BAP_FUNCTION = 145,        ///< BAP function
    MSGID_LOST = 146,                ///< lost messages
    MSGID_TESTTOOLS = 147,           ///< test tools
    MSGID_METAINFO = 148,            ///< meta information
    MSGID_LOST_EXT = 149,            ///< lost messages, extended
    MSGID_WRAPPER = 253,             ///< wrapper
    MSGID_PADDING = 254,             ///< padding
    MSGID_ENDOFFILE = 255,           ///< end of file
    MSGID_SLEEPMODE = 257,           ///< sleep mode

    // Control and online ids
    MSGID_GETVERSION = 32771,             ///< version wanted
    MSGID_VERSION = 32772,                ///< version
    MSGID_GETTIME = 32773,                ///< time wanted
    MSGID_TIME = 32774,                   ///< time
    MSGID_PING = 32776,                   ///< ping
    MSGID_PUSHBUTTON = 32783,             ///< push button
    MSGID_CASCADE = 32784,                ///< cascade
    MSGID_CAN_PROXY = 32786,              ///< CAN proxy
    MSGID_BYTESTREAM = 32787,             ///< byte stream
    MSGID_CAN_TRANSPORT = 32788,          ///< CAN transport
    MSGID_BUSLOAD = 32789,                ///< bus load
    MSGID_CANSTARTSTOP = 32792,           ///< CAN start and stop
    MSGID_ONLINESTREAMINGCONFIG = 32796,  ///< online streaming, configuration
    MSGID_START = 32800,                  ///< start
    MSGID_STOP = 32801,                   ///< stop
    MSGID_CANLOAD = 32802,                ///< CAN load
    MSGID_BUSLOADEXT = 32804,             ///< bus load, extended
    MSGID_LOGGER_IDENTIFICATION = 32805,  ///< logger identification
    MSGID_SIGNAL = 32806,                 ///< signal
    MSGID_SSCCONFIG = 32816,              ///< SSC configuration
    MSGID_KEYBOARD = 32817,               ///< keyboard
    MSGID_MOSTRECMODE = 32819,            ///< MOST recording mode
    MSGID_SBC = 32822,                    ///< SBC
    MSGID_NAS_IDENTIFICATION = 32823,     ///< NAS identification
    MSGID_NOTIFICATION = 32824,           ///< notification
    MSGID_CLOUD = 32825,                  ///< cloud
    MSGID_MOBILE_SERVICE = 32826,         ///< mobile service
    MSGID_LSS = 32827,                    ///< LSS
    MSGID_ROUTER = 65534,                 ///< router
    MSGID_INVALID = 65535                 ///< no valid message
};
