#include "libvextrace/GPSTraceMessage.h"

#include <stdexcept>
#include <utility>

GPSTraceMessage::GPSTraceMessage() : MessageBase(MSGID_GPS, 0) {}

GPSTraceMessage::GPSTraceMessage(timeStamp_t timeStamp, const std::string& record)
    : MessageBase(MSGID_GPS, timeStamp) {
    storeSentence(record);
}

GPSTraceMessage::GPSTraceMessage(timeStamp_t timeStamp, const uint8_t* data, size_t dataSize)
    : MessageBase(MSGID_GPS, timeStamp) {
    if (data == nullptr && dataSize != 0) {
        throw std::logic_error("GPSTraceMessage: Null data with a size.");
    }
    storeSentence({reinterpret_cast<const char*>(data), dataSize});
}

void GPSTraceMessage::addRecord(const std::string& record) {
    storeSentence(record);
    parseRMC();
    parseGGA();
}

void GPSTraceMessage::storeSentence(std::string_view record) {
    // One allocation, with the line feed in place from the start.
    const bool ended = !record.empty() && record.back() == '\n';
    std::string s(record.size() + (ended ? 0 : 1), '\n');
    record.copy(s.data(), record.size());
    if (s[0] == '$' && s[1] == 'G') {
        s[2] = 'P';  // in a bare "$G" this is the line feed
    }
    const std::string_view code = std::string_view(s).substr(0, NMEA_CODE_SIZE);
    const auto place = gpsStrings.lower_bound(code);
    if (place == gpsStrings.end() || place->first != code) {
        // The entry copies the code, its first member, before it takes s, which holds the code.
        gpsStrings.emplace_hint(place, code, std::move(s));
    }
}

// NOLINTNEXTLINE(readability-const-return-type): the type is part of the interface
const std::string GPSTraceMessage::getString() const {
    return gpsStrings.empty() ? std::string() : gpsStrings.begin()->second;
}

bool GPSTraceMessage::hasNmeaDataType(nmeaDataType_t type) const {
    switch (type) {
        case NMEA_DATA_GPRMC:
            return gpsStrings.count(GPRMC) != 0;
        case NMEA_DATA_GPGGA:
            return gpsStrings.count(GPGGA) != 0;
    }
    return false;
}

GPSTraceMessage::gprmc_t GPSTraceMessage::getRMC() const {
    return gprmc;
}

GPSTraceMessage::gpgga_t GPSTraceMessage::getGGA() const {
    return gpgga;
}

GPSTraceMessage* GPSTraceMessage::clone() const {
    return new GPSTraceMessage(*this);
}

bool GPSTraceMessage::operator==(const MessageBase& msg) const {
    const auto* gm = dynamic_cast<const GPSTraceMessage*>(&msg);
    return gm != nullptr && gpsStrings == gm->gpsStrings;
}

std::string GPSTraceMessage::getSourceChannel() const {
    return "GPS";
}

uint64_t GPSTraceMessage::getSourceChannelID() const {
    return MessageBase::getSourceChannelID(BUSID_GPS, 0, mbnr);
}
