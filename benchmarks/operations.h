#pragma once

#include <iterator>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"

/// What a receiver of centimetre precision sends for one fix.
inline const std::string RMC_TEXT =
    "$GNRMC,132819.60,A,4134.49795459,N,09345.03431408,W,0.148,124.888,180320,11.5985,E,D*3F\r\n";
inline const std::string GGA_TEXT =
    "$GNGGA,132819.60,4134.49795459,N,09345.03431408,W,2,10,0.9,278.161,M,-31.442,M,6.6,0133*"
    "6A\r\n";

/// What a receiver of several systems sends every second, seven codes among fourteen sentences.
inline const std::string BURST[] = {
    "$GNRMC,091546.00,A,5219.48213,N,00936.17502,E,13.274,87.31,140921,,,A,V*0A\r\n",
    "$GNVTG,87.31,T,,M,13.274,N,24.583,K,A*15\r\n",
    "$GNGGA,091546.00,5219.48213,N,00936.17502,E,1,12,0.61,87.4,M,46.2,M,,*7C\r\n",
    "$GNGSA,A,3,02,05,07,13,20,29,30,,,,,,1.12,0.61,0.94,1*01\r\n",
    "$GNGSA,A,3,65,71,72,87,88,,,,,,,,1.12,0.61,0.94,2*05\r\n",
    "$GNGSA,A,3,04,11,12,19,,,,,,,,,1.12,0.61,0.94,3*04\r\n",
    "$GNGSA,A,3,14,21,33,,,,,,,,,,1.12,0.61,0.94,4*0A\r\n",
    "$GPGSV,3,1,11,02,18,303,31,05,57,218,44,07,71,084,46,08,06,036,,1*67\r\n",
    "$GPGSV,3,2,11,09,23,101,17,13,41,265,42,14,03,187,,20,33,241,39,1*6C\r\n",
    "$GPGSV,3,3,11,27,09,062,12,29,15,216,34,30,66,152,45,1*56\r\n",
    "$GLGSV,2,1,08,65,48,071,40,71,27,329,33,72,63,012,43,78,11,196,,1*70\r\n",
    "$GLGSV,2,2,08,79,08,243,19,86,05,088,,87,52,134,38,88,37,219,36,1*7E\r\n",
    "$GNGLL,5219.48213,N,00936.17502,E,091546.00,A,A*76\r\n",
    "$GNZDA,091546.00,14,09,2021,00,00*7A\r\n"};

constexpr timeStamp_t STAMP = 0x1122334455667788;

/// The byte-array form of a message.
inline std::vector<uint8_t> bytesOf(const MessageBase& message) {
    std::vector<uint8_t> bytes(message.getSize() + MessageBase::MSGSIZE_LENGTH);
    uint8_t* pdest = bytes.data();
    message.writeToByteArray(pdest, bytes.size(), false);
    return bytes;
}

/// The message built from the first sentence, with the others added.
template <class Message, class Sentences>
Message build(const Sentences& sentences) {
    auto sentence = std::begin(sentences);
    Message message(STAMP, *sentence);
    while (++sentence != std::end(sentences)) {
        message.addRecord(*sentence);
    }
    return message;
}

/// One fix of either kind of message, ready for the operations.
template <class Message>
struct Fix {
    Fix() {
        Message::registerMessage();
        message.addRecord(GGA_TEXT);
        other.addRecord(GGA_TEXT);
        bytes = bytesOf(message);
        room.resize(bytes.size());
    }

    void write(const MessageBase& from) {
        uint8_t* pdest = room.data();
        from.writeToByteArray(pdest, room.size(), false);
    }

    void readNumbers(const Message& from) {
        from.getGPRMC(gprmc);
        from.getGPGGA(gpgga);
    }

    const MessageBase& base() const { return message; }

    Message message{STAMP, RMC_TEXT};
    Message other{STAMP, RMC_TEXT};
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> room;
    typename Message::numeric_gprmc_t gprmc;
    typename Message::numeric_gpgga_t gpgga;
    bool equal = false;
};

/// An operation on a fix, and how many times as fast as the plain way it must be. What is wanted
/// lies below what is measured by more than measurements differ.
template <class Message>
struct Operation {
    const char* name;
    double wantedRatio;
    void (*run)(Fix<Message>& fix);
};

template <class Message>
inline constexpr Operation<Message> OPERATIONS[] = {
    {"construct", 1.1, [](Fix<Message>&) { Message message(STAMP, RMC_TEXT); }},
    {"construct+addRecord", 3,
     [](Fix<Message>&) {
         Message message(STAMP, RMC_TEXT);
         message.addRecord(GGA_TEXT);
     }},
    {"addRecord-held", 25, [](Fix<Message>& fix) { fix.message.addRecord(GGA_TEXT); }},
    {"burst-of-14", 10, [](Fix<Message>&) { build<Message>(BURST); }},
    {"getGPRMC", 6, [](Fix<Message>& fix) { fix.message.getGPRMC(fix.gprmc); }},
    {"getGPGGA", 6, [](Fix<Message>& fix) { fix.message.getGPGGA(fix.gpgga); }},
    {"writeToByteArray", 0.7, [](Fix<Message>& fix) { fix.write(fix.message); }},
    {"readFromByteArray", 3,
     [](Fix<Message>& fix) { MessageFactory::decode(fix.bytes.data(), fix.bytes.size()); }},
    {"operator==", 0.8, [](Fix<Message>& fix) { fix.equal = fix.base() == fix.other; }},
    {"toString", 1, [](Fix<Message>& fix) { fix.base().toString(); }},
    {"formatForRDB", 1.7, [](Fix<Message>& fix) { fix.message.formatForRDB(); }},
    // The whole road: text in, numbers and bytes out.
    {"text-to-numbers+bytes", 4,
     [](Fix<Message>& fix) {
         Message message(STAMP, RMC_TEXT);
         message.addRecord(GGA_TEXT);
         fix.readNumbers(message);
         fix.write(message);
     }},
};
