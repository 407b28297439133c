// A program that was linked with an older version of the libraries. It is compiled with that
// version's headers and uses all that a program may have taken over from them: the layout of the
// structures, what is inline, the slots of virtual functions, the types that are thrown and cast.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "libvexutil/datablock.h"

namespace {

const std::string RMC =
    "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*62\r\n";
const std::string GGA =
    "$GNGGA,123520,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,7,0120*59\r\n";
const std::string TRACE_LINE =
    "0000000000000102 00000000  GPS         | "
    "$GPGGA,123520,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,7,0120*59 "
    "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*62";

GPSTraceMessage fix() {
    GPSTraceMessage message(258, RMC);
    message.addRecord(GGA);
    return message;
}

std::vector<uint8_t> bytesOf(const MessageBase& message) {
    std::vector<uint8_t> bytes(message.getSize() + MessageBase::MSGSIZE_LENGTH);
    uint8_t* pdest = bytes.data();
    message.writeToByteArray(pdest, bytes.size(), false);
    return bytes;
}

bool isFix(const MessageBase& message) {
    const auto* gps = dynamic_cast<const GPSTraceMessage*>(&message);
    return gps != nullptr && *gps == fix() && message.toString() == TRACE_LINE;
}

// A message with memory behind it that no function of the library may touch.
struct Guarded {
    GPSTraceMessage message;
    uint64_t guard = 0x0123456789ABCDEF;

    bool untouched() const { return guard == 0x0123456789ABCDEF; }
};

bool messagesAreAsLargeAsTheyWere() {
    Guarded guarded;
    guarded.message = GPSTraceMessage(258, RMC);
    guarded.message.addRecord(GGA);
    guarded.message.formatForRDB();
    const std::unique_ptr<GPSTraceMessage> clone(guarded.message.clone());
    guarded.message = *clone;
    return guarded.untouched() && isFix(guarded.message);
}

bool messagesAreCopiedMovedAndAssigned() {
    GPSTraceMessage first = fix();
    first.setHeaderReserved(0x1234);
    GPSTraceMessage copy = first;
    const GPSTraceMessage moved = std::move(first);
    GPSTraceMessage assigned(1, "$PXYZ");
    assigned = copy;
    copy = GPSTraceMessage();
    GPSTraceMessage moveAssigned;
    moveAssigned = fix();
    return isFix(moved) && isFix(moveAssigned) && copy.getString().empty() && assigned == moved &&
           assigned.getHeaderReserved() == 0x1234 && assigned.getRMC().course == "084.4";
}

bool messagesAreClonedAndDeletedThroughTheBase() {
    const GPSTraceMessage message = fix();
    const MessageBase& base = message;
    const std::unique_ptr<MessageBase> clone(base.clone());
    return isFix(*clone) && *clone == base && clone->getMsgID() == MSGID_GPS &&
           clone->getTimeStamp() == 258;
}

bool virtualFunctionsAreWhereTheyWere() {
    GPSTraceMessage message = fix();
    MessageBase& base = message;
    base.cascadeChannel(9);
    std::ostringstream line;
    base.print(line);
    return base.getSize() == 12 + RMC.size() + GGA.size() && base.getSourceChannel() == "GPS" &&
           base.getSourceChannelID() == 0x900000D00 && base.getMbnr() == 9 &&
           line.str() == "0000000000000102 00000009" + TRACE_LINE.substr(25);
}

bool fieldsOfRmc() {
    const GPSTraceMessage::gprmc_t f = fix().getRMC();
    return f.timeUTC == "123519" && f.status == "A" && f.latitude == "4807.038" &&
           f.latitudeHemisphere == "N" && f.longitude == "01131.000" &&
           f.longitudeHemisphere == "E" && f.speed == "022.4" && f.course == "084.4" &&
           f.dateUTC == "230394" && f.magneticVariation == "003.1" &&
           f.magneticVariationDirection == "W" && f.modeIndicator == "A";
}

bool fieldsOfGga() {
    const GPSTraceMessage::gpgga_t f = fix().getGGA();
    return f.timeUTC == "123520" && f.latitude == "4807.038" && f.latitudeHemisphere == "N" &&
           f.longitude == "01131.000" && f.longitudeHemisphere == "E" &&
           f.gpsQualityIndicator == "1" && f.numberSatellites == "08" &&
           f.horizontalDelution == "0.9" && f.antennaAltitude == "545.4" &&
           f.antennaAltitudeUnit == "M" && f.geoidalSeparation == "46.9" &&
           f.geoidalSeparationUnit == "M" && f.ageGPSdata == "7" && f.referenceId == "0120";
}

bool isNear(double value, double expected) {
    return std::fabs(value - expected) < 1e-9;
}

bool numbersOfRmc() {
    GPSTraceMessage::numeric_gprmc_t n;
    return fix().getGPRMC(n) && n.timeUTC == 123519 && n.status && isNear(n.latitude, 48.1173) &&
           isNear(n.longitude, 11.51666666667) && isNear(n.speed, 41.4848) && n.course == 84.4 &&
           n.dateUTC == 230394;
}

bool numbersOfGga() {
    GPSTraceMessage::numeric_gpgga_t n;
    return fix().getGPGGA(n) && n.timeUTC == 123520 && n.status && isNear(n.latitude, 48.1173) &&
           isNear(n.longitude, 11.51666666667) && n.numberSatellites == 8 &&
           n.antennaAltitude == 545.4;
}

bool textsAreWritten() {
    GPSTraceMessage message = fix();
    const MessageBase& base = message;
    std::ostringstream os;
    os << message << '\n' << base << '\n' << message.getRMC() << message.getGGA();
    const std::string text = os.str();
    return text.find(TRACE_LINE + "\n             258        0\n") == 0 &&
           text.find("1. UTC time = 123519\n") != std::string::npos &&
           text.find("1. UTC time = 123520\n") != std::string::npos &&
           message.formatForRDB() == "48°7.038 N, 11°31.000 E, 545.4M" &&
           message.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPGGA);
}

bool messagesComeBackFromBytes() {
    const std::vector<uint8_t> bytes = bytesOf(fix());
    GPSTraceMessage::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    return decoded.message && isFix(*decoded.message) && decoded.bytesTaken == bytes.size() &&
           !decoded.error && MessageFactory::getReader(MSGID_GPS) != nullptr;
}

bool errorsAreCaught() {
    const GPSTraceMessage message = fix();
    const MessageBase& base = message;
    uint8_t* nowhere = nullptr;
    try {
        base.writeToByteArray(nowhere, 3, false);
    } catch (const InvalidMessageException& e) {
        return e.getCause() == IM_INVALID_LEN && e.getInvalidValue() == 3 &&
               e.what() == std::string("MessageBase: No room for the message.");
    }
    return false;
}

bool invalidMessagesAreMade() {
    const uint8_t bytes[] = {1, 2, 3};
    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    DecodedMessage decoded = MessageFactory::decode(bytes, sizeof bytes);
    MessageBase::invalidHandling = IMH_RETURN_NULL;
    return decoded.message && decoded.message->getMsgID() == MSGID_INVALID &&
           decoded.bytesTaken == 3 && decoded.error && decoded.error->getInvalidValue() == 3 &&
           !MessageFactory::decode(bytes, sizeof bytes).message;
}

// A type of the program's own, with every virtual function overridden that there was.
class Pressure : public MessageBase {
public:
    explicit Pressure(uint16_t pascal) : MessageBase(MSGID_PRESSURE, 0x0102030405060708) {
        text = "pressure";
        bytes = {static_cast<uint8_t>(pascal >> 8), static_cast<uint8_t>(pascal)};
    }

    static bool registerMessage() { return MessageFactory::registerReader(MSGID_PRESSURE, &read); }

    Pressure* clone() const override { return new Pressure(*this); }
    size_t getSize() const override { return MessageBase::getSize() + bytes.size(); }
    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override {
        const size_t size = MessageBase::writeToByteArray(pdest, maxlen, sync);
        pdest = std::copy(bytes.begin(), bytes.end(), pdest);
        return size;
    }
    bool operator==(const MessageBase& msg) const override {
        const auto* other = dynamic_cast<const Pressure*>(&msg);
        return other != nullptr && text == other->text && bytes == other->bytes;
    }
    std::ostream& print(std::ostream& os) const override { return os << toString(); }
    std::string toString() const override { return text; }
    std::string getSourceChannel() const override { return "PRESSURE"; }
    uint64_t getSourceChannelID() const override {
        return MessageBase::getSourceChannelID(BUSID_LOGGER_INTERN, 3, mbnr);
    }
    void cascadeChannel(uint16_t channel) override { mbnr = channel + 1U; }

private:
    static constexpr auto MSGID_PRESSURE = static_cast<msgid_t>(61440);

    static MessageBase* read(const uint8_t* psrc, size_t len) {
        if (len != MO_BASE_DERIVED + 2) {
            throw InvalidMessageException(IM_INVALID_LEN, "Pressure", static_cast<uint16_t>(len));
        }
        auto message = std::make_unique<Pressure>(byteArrayToUint16(psrc + MO_BASE_DERIVED));
        message->stamp = byteArrayToUint64(psrc + MO_TIMESTAMP);
        message->headerReserved = byteArrayToUint16(psrc + MO_HDRRESERVED);
        return message.release();
    }
};

bool anotherTypeGoesToBytesAndBack() {
    Pressure pressure(0xABCD);
    pressure.setHeaderReserved(0x0E0F);
    const std::vector<uint8_t> expected = {0, 14, 0xF0, 0, 0x0E, 0x0F, 1,    2,
                                           3, 4,  5,    6, 7,    8,    0xAB, 0xCD};
    const std::vector<uint8_t> bytes = bytesOf(pressure);
    Pressure::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    return bytes == expected && decoded.message && *decoded.message == pressure &&
           decoded.message->getHeaderReserved() == 0x0E0F &&
           decoded.message->getTimeStamp() == 0x0102030405060708;
}

bool anotherTypeIsRefusedByItsReader() {
    const uint8_t bytes[] = {0, 12, 0xF0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    Pressure::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(bytes, sizeof bytes);
    return !decoded.message && decoded.error && decoded.error->getInvalidValue() == 14;
}

bool anotherTypeIsNoGpsMessage() {
    const Pressure pressure(1);
    return !(static_cast<const MessageBase&>(fix()) == pressure) && !(pressure == fix());
}

// What the library offers to types derived from its own.
struct Reader : GPSTraceMessage {
    using GPSTraceMessage::coordinateToDouble;
    using GPSTraceMessage::GPSTraceMessage;

    bool parseBoth() { return parseRMC() && parseGGA(); }
};

bool derivedTypesParse() {
    Reader reader(1, RMC);
    const bool withoutGga = reader.parseBoth();
    reader.addRecord(GGA);
    return !withoutGga && reader.parseBoth() && Reader::coordinateToDouble("0730") == 7.5;
}

bool numbersGoToBytes() {
    uint8_t bytes[8] = {};
    uint16ToByteArray(0x1234, bytes);
    const bool small = bytes[0] == 0x12 && byteArrayToUint16(bytes) == 0x1234;
    uint64ToByteArray(0x123456789ABCDEF0, bytes);
    return small && bytes[7] == 0xF0 && byteArrayToUint64(bytes) == 0x123456789ABCDEF0;
}

}  // namespace

int main() {
    const std::pair<const char*, bool (*)()> checks[] = {
        {"messages are as large as they were", &messagesAreAsLargeAsTheyWere},
        {"messages are copied, moved and assigned", &messagesAreCopiedMovedAndAssigned},
        {"messages are cloned and deleted", &messagesAreClonedAndDeletedThroughTheBase},
        {"virtual functions are where they were", &virtualFunctionsAreWhereTheyWere},
        {"fields of RMC", &fieldsOfRmc},
        {"fields of GGA", &fieldsOfGga},
        {"numbers of RMC", &numbersOfRmc},
        {"numbers of GGA", &numbersOfGga},
        {"texts are written", &textsAreWritten},
        {"messages come back from bytes", &messagesComeBackFromBytes},
        {"errors are caught", &errorsAreCaught},
        {"invalid messages are made", &invalidMessagesAreMade},
        {"another type goes to bytes and back", &anotherTypeGoesToBytesAndBack},
        {"another type is refused by its reader", &anotherTypeIsRefusedByItsReader},
        {"another type is no GPS message", &anotherTypeIsNoGpsMessage},
        {"derived types parse", &derivedTypesParse},
        {"numbers go to bytes", &numbersGoToBytes},
    };
    int failures = 0;
    for (const auto& check : checks) {
        if (!check.second()) {
            std::cout << "No longer true: " << check.first << '\n';
            failures++;
        }
    }
    return failures;
}
