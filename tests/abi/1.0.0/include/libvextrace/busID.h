/// \file
/// The kinds of bus that a data logger records.
#pragma once

/// Kind of bus (or other source) that a trace message comes from; bits 8 to 15 of the number of a
/// source, see MessageBase::getSourceChannelID().
enum busid_t {
    BUSID_UNKNOWN = 0,         ///< not known, or no bus
    BUSID_CAN = 1,             ///< CAN
    BUSID_SERIAL = 2,          ///< serial line
    BUSID_MOST25 = 3,          ///< MOST, 25 Mbit/s
    BUSID_FLEXRAY = 4,         ///< FlexRay
    BUSID_LIN = 5,             ///< LIN
    BUSID_ETHERNET = 6,        ///< Ethernet
    BUSID_CAMERA = 7,          ///< camera
    BUSID_MOST150 = 8,         ///< MOST, 150 Mbit/s
    BUSID_MOST50 = 9,          ///< MOST, 50 Mbit/s
    BUSID_ANALOG = 10,         ///< analogue inputs
    BUSID_CCPXCP = 11,         ///< CCP and XCP
    BUSID_GPIO = 12,           ///< general-purpose inputs and outputs
    BUSID_GPS = 13,            ///< GPS receiver
    BUSID_ECL = 14,            ///< ECL
    BUSID_COMPLEXFILTER = 15,  ///< complex filter
    BUSID_TTY = 16,            ///< TTY
    BUSID_TSA = 17,            ///< TSA
    BUSID_LOGGER_INTERN = 18,  ///< the logger itself
    BUSID_MII = 19,            ///< MII
    BUSID_WAKEUPLINE = 20,     ///< wake-up line
    BUSID_NUM = 21             ///< count of kinds, not a kind
};
