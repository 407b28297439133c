#pragma once

#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"

/// What a receiver of centimetre precision sends for one fix.
inline const std::string RMC_TEXT =
    "$GNRMC,132819.60,A,4134.49795459,N,09345.03431408,W,0.148,124.888,180320,11.5985,E,D*3F\r\n";
inline const std::string GGA_TEXT =
    "$GNGGA,132819.60,4134.49795459,N,09345.03431408,W,2,10,0.9,278.161,M,-31.442,M,6.6,0133*"
    "6A\r\n";

constexpr timeStamp_t STAMP = 0x1122334455667788;

/// The byte-array form of a message.
inline std::vector<uint8_t> bytesOf(const MessageBase& message) {
    std::vector<uint8_t> bytes(message.getSize() + MessageBase::MSGSIZE_LENGTH);
    uint8_t* pdest = bytes.data();
    message.writeToByteArray(pdest, bytes.size(), false);
    return bytes;
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
    GPSTraceMessage::numeric_gprmc_t gprmc;
    GPSTraceMessage::numeric_gpgga_t gpgga;
    bool equal = false;
};

/// An operation on a fix, and what it is held to: how many times as fast as the plain way, with how
/// many heap allocations. Negative where nothing is asked.
template <class Message>
struct Operation {
    const char* name;
    double wantedRatio;
    int wantedAllocations;
    void (*run)(Fix<Message>& fix);
};

template <class Message>
inline constexpr Operation<Message> OPERATIONS[] = {
    {"construct", 1.2, 2, [](Fix<Message>&) { Message message(STAMP, RMC_TEXT); }},
    {"construct+addRecord", 3, 4,
     [](Fix<Message>&) {
         Message message(STAMP, RMC_TEXT);
         message.addRecord(GGA_TEXT);
     }},
    {"addRecord-held", 3, 1, [](Fix<Message>& fix) { fix.message.addRecord(GGA_TEXT); }},
    {"getGPRMC", 6, 0, [](Fix<Message>& fix) { fix.message.getGPRMC(fix.gprmc); }},
    {"getGPGGA", 6, 0, [](Fix<Message>& fix) { fix.message.getGPGGA(fix.gpgga); }},
    {"writeToByteArray", 0.7, 0, [](Fix<Message>& fix) { fix.write(fix.message); }},
    {"readFromByteArray", 3, 7,
     [](Fix<Message>& fix) { MessageFactory::decode(fix.bytes.data(), fix.bytes.size()); }},
    {"operator==", -1, 0, [](Fix<Message>& fix) { fix.equal = fix.base() == fix.other; }},
    {"toString", 1, -1, [](Fix<Message>& fix) { fix.base().toString(); }},
    {"formatForRDB", 1.8, -1, [](Fix<Message>& fix) { fix.message.formatForRDB(); }},
    // The whole road: text in, numbers and bytes out.
    {"text-to-numbers+bytes", -1, -1,
     [](Fix<Message>& fix) {
         Message message(STAMP, RMC_TEXT);
         message.addRecord(GGA_TEXT);
         fix.readNumbers(message);
         fix.write(message);
     }},
};
