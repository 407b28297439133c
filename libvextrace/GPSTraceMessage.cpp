#include "libvextrace/GPSTraceMessage.h"

#include <stdexcept>
#include <utility>

namespace {

bool endsInLineFeed(std::string_view text) {
    return !text.empty() && text.back() == '\n';
}

std::string_view textOf(const uint8_t* data, size_t dataSize) {
    if (data == nullptr && dataSize != 0) {
        throw std::logic_error("GPSTraceMessage: Null data with a size.");
    }
    return {reinterpret_cast<const char*>(data), dataSize};
}

// In a bare "$G" the third character is the line feed.
void makeTalkerGP(char* sentence) {
    if (sentence[0] == '$' && sentence[1] == 'G') {
        sentence[2] = 'P';
    }
}

// The sentence as it is stored, in one allocation.
std::string storedSentence(std::string_view record) {
    std::string s(record.size() + (endsInLineFeed(record) ? 0 : 1), '\n');
    record.copy(s.data(), record.size());
    makeTalkerGP(s.data());
    return s;
}

// The code under which a sentence is stored, known before the sentence is built.
class SentenceCode {
public:
    explicit SentenceCode(std::string_view record)
        : size(record.copy(characters, GPSTraceMessage::NMEA_CODE_SIZE)) {
        if (size < GPSTraceMessage::NMEA_CODE_SIZE && !endsInLineFeed(record)) {
            characters[size++] = '\n';
        }
        makeTalkerGP(characters);
    }

    std::string_view text() const { return {characters, size}; }

private:
    char characters[GPSTraceMessage::NMEA_CODE_SIZE] = {};
    size_t size;
};

}  // namespace

GPSTraceMessage::GPSTraceMessage() : MessageBase(MSGID_GPS, 0) {}

GPSTraceMessage::GPSTraceMessage(timeStamp_t timeStamp, const std::string& record)
    : MessageBase(MSGID_GPS, timeStamp) {
    storeSentence(record);
}

GPSTraceMessage::GPSTraceMessage(timeStamp_t timeStamp, const uint8_t* data, size_t dataSize)
    : MessageBase(MSGID_GPS, timeStamp) {
    storeSentence(textOf(data, dataSize));
}

// Whatever may fail comes before the first change. No member is named here, so none can be left
// out.
GPSTraceMessage& GPSTraceMessage::operator=(const GPSTraceMessage& other) {
    GPSTraceMessage copy(other);
    return *this = std::move(copy);
}

void GPSTraceMessage::addRecord(const std::string& record) {
    storeSentence(record);
    splitNewSentences();
}

void GPSTraceMessage::addRecord(const uint8_t* data, size_t dataSize) {
    storeSentence(textOf(data, dataSize));
    splitNewSentences();
}

void GPSTraceMessage::storeSentence(std::string_view record) {
    const SentenceCode code(record);
    const auto place = gpsStrings.lower_bound(code.text());
    if (place == gpsStrings.end() || place->first != code.text()) {
        gpsStrings.emplace_hint(place, code.text(), storedSentence(record));
    }
}

std::string_view GPSTraceMessage::getSentence(std::string_view code) const {
    const auto iter = gpsStrings.find(code);
    return iter != gpsStrings.end() ? std::string_view(iter->second) : std::string_view();
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
