#include "benchmarks/PlainGps.h"

#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <memory>
#include <sstream>
#include <utility>

#include "libvexutil/datablock.h"

namespace {

constexpr msgid_t PLAIN_ID = static_cast<msgid_t>(1000);
constexpr size_t CODE_SIZE = 6;
constexpr double KMH_PER_KNOT = 1.852;

void nextField(std::stringstream& s, std::string& item) {
    item.clear();
    std::getline(s, item, ',');
}

void moveField(std::stringstream& s, std::string& item, char delimiter, std::string& member) {
    std::getline(s, item, delimiter);
    member.swap(item);
    item.clear();
}

uint64_t toNumber(const std::string& item) {
    return static_cast<uint64_t>(std::strtol(item.c_str(), nullptr, 10));
}

double toReal(const std::string& item) {
    return std::strtod(item.c_str(), nullptr);
}

uint16_t wholeDegrees(const std::string& coordinate) {
    return static_cast<uint16_t>(std::strtol(coordinate.c_str(), nullptr, 10) / 100);
}

double coordinateToDouble(const std::string& coordinate) {
    const uint16_t deg = wholeDegrees(coordinate);
    return deg + (toReal(coordinate) - 100 * deg) / 60.0;
}

double readCoordinate(std::stringstream& s, std::string& item, char negativeHemisphere) {
    nextField(s, item);
    const double degrees = coordinateToDouble(item);
    nextField(s, item);
    return item[0] == negativeHemisphere ? -degrees : degrees;
}

void writeCoordinate(std::ostream& os, const std::string& coordinate,
                     const std::string& hemisphere) {
    const uint16_t deg = wholeDegrees(coordinate);
    os << deg << "\xC2\xB0" << toReal(coordinate) - 100 * deg << ' ' << hemisphere;
}

}  // namespace

PlainGps::PlainGps(timeStamp_t timeStamp, const std::string& record)
    : MessageBase(PLAIN_ID, timeStamp) {
    storeSentence(record);
}

void PlainGps::storeSentence(const std::string& record) {
    std::string s = record;
    if (s.empty() || s.back() != '\n') {
        s += '\n';
    }
    if (s[0] == '$' && s[1] == 'G') {
        s[2] = 'P';
    }
    gpsStrings.insert(std::make_pair(s.substr(0, CODE_SIZE), s));
}

void PlainGps::addRecord(const std::string& record) {
    storeSentence(record);
    parseRMC();
    parseGGA();
}

const std::string* PlainGps::held(const char* code) const {
    const auto iter = gpsStrings.find(code);
    return iter == gpsStrings.end() ? nullptr : &iter->second;
}

bool PlainGps::parseRMC() {
    const std::string* sentence = held("$GPRMC");
    if (sentence == nullptr) {
        return false;
    }
    std::stringstream s(*sentence);
    std::string item;
    nextField(s, item);
    item.clear();
    for (std::string* member :
         {&gprmc.timeUTC, &gprmc.status, &gprmc.latitude, &gprmc.latitudeHemisphere,
          &gprmc.longitude, &gprmc.longitudeHemisphere, &gprmc.speed, &gprmc.course, &gprmc.dateUTC,
          &gprmc.magneticVariation, &gprmc.magneticVariationDirection}) {
        moveField(s, item, ',', *member);
    }
    moveField(s, item, '*', gprmc.modeIndicator);
    return true;
}

bool PlainGps::parseGGA() {
    const std::string* sentence = held("$GPGGA");
    if (sentence == nullptr) {
        return false;
    }
    std::stringstream s(*sentence);
    std::string item;
    nextField(s, item);
    for (std::string* member :
         {&gpgga.timeUTC, &gpgga.latitude, &gpgga.latitudeHemisphere, &gpgga.longitude,
          &gpgga.longitudeHemisphere, &gpgga.gpsQualityIndicator, &gpgga.numberSatellites,
          &gpgga.horizontalDelution, &gpgga.antennaAltitude, &gpgga.antennaAltitudeUnit,
          &gpgga.geoidalSeparation, &gpgga.geoidalSeparationUnit, &gpgga.ageGPSdata}) {
        moveField(s, item, ',', *member);
    }
    moveField(s, item, '*', gpgga.referenceId);
    return true;
}

bool PlainGps::getGPRMC(numeric_gprmc_t& numericGprmc) const {
    const std::string* sentence = held("$GPRMC");
    if (sentence == nullptr) {
        return false;
    }
    std::stringstream s(*sentence);
    std::string item;
    nextField(s, item);
    nextField(s, item);
    numericGprmc.timeUTC = toNumber(item);
    nextField(s, item);
    numericGprmc.status = item[0] == 'A';
    numericGprmc.latitude = readCoordinate(s, item, 'S');
    numericGprmc.longitude = readCoordinate(s, item, 'W');
    nextField(s, item);
    numericGprmc.speed = toReal(item) * KMH_PER_KNOT;
    nextField(s, item);
    numericGprmc.course = toReal(item);
    nextField(s, item);
    numericGprmc.dateUTC = toNumber(item);
    return true;
}

bool PlainGps::getGPGGA(numeric_gpgga_t& numericGpgga) const {
    const std::string* sentence = held("$GPGGA");
    if (sentence == nullptr) {
        return false;
    }
    std::stringstream s(*sentence);
    std::string item;
    nextField(s, item);
    std::getline(s, item, ',');
    numericGpgga.status = item[0] != '\0';
    numericGpgga.timeUTC = toNumber(item);
    numericGpgga.latitude = readCoordinate(s, item, 'S');
    numericGpgga.longitude = readCoordinate(s, item, 'W');
    nextField(s, item);
    nextField(s, item);
    numericGpgga.numberSatellites = static_cast<uint16_t>(toNumber(item));
    nextField(s, item);
    nextField(s, item);
    numericGpgga.antennaAltitude = toReal(item);
    return true;
}

std::string PlainGps::formatForRDB() {
    std::ostringstream os;
    os << std::fixed << std::setprecision(3);
    std::string latitude;
    std::string latitudeHemisphere;
    std::string longitude;
    std::string longitudeHemisphere;
    std::string antennaAltitude;
    std::string antennaAltitudeUnit;
    if (parseGGA() && toNumber(gpgga.numberSatellites) != 0) {
        latitude = gpgga.latitude;
        latitudeHemisphere = gpgga.latitudeHemisphere;
        longitude = gpgga.longitude;
        longitudeHemisphere = gpgga.longitudeHemisphere;
        antennaAltitude = gpgga.antennaAltitude;
        antennaAltitudeUnit = gpgga.antennaAltitudeUnit;
    } else if (parseRMC() && gprmc.status == "A") {
        latitude = gprmc.latitude;
        latitudeHemisphere = gprmc.latitudeHemisphere;
        longitude = gprmc.longitude;
        longitudeHemisphere = gprmc.longitudeHemisphere;
    } else {
        return "";
    }
    writeCoordinate(os, latitude, latitudeHemisphere);
    os << ", ";
    writeCoordinate(os, longitude, longitudeHemisphere);
    if (!antennaAltitude.empty()) {
        os << ", " << antennaAltitude << antennaAltitudeUnit;
    }
    return os.str();
}

bool PlainGps::registerMessage() {
    return MessageFactory::registerReader(PLAIN_ID, &readFromByteArray);
}

PlainGps* PlainGps::clone() const {
    return new PlainGps(*this);
}

size_t PlainGps::writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const {
    const size_t size = getSize();
    MessageBase::writeToByteArray(pdest, maxlen, sync);
    for (const auto& entry : gpsStrings) {
        std::memcpy(pdest, entry.second.data(), entry.second.size());
        pdest += entry.second.size();
    }
    return size;
}

size_t PlainGps::getSize() const {
    size_t size = 12;
    for (const auto& entry : gpsStrings) {
        size += entry.second.size();
    }
    return size;
}

MessageBase* PlainGps::readFromByteArray(const uint8_t* psrc, size_t len) {
    const auto copy = std::make_unique<char[]>(len + 1);
    std::memcpy(copy.get(), psrc, len);
    copy[len] = '\0';
    char* position = nullptr;
    const char* piece = strtok_r(copy.get() + MO_BASE_DERIVED, "\n", &position);
    if (piece == nullptr) {
        throw InvalidMessageException(IM_MISC, "PlainGps: No NMEA code found.");
    }
    auto message = std::make_unique<PlainGps>(byteArrayToUint64(psrc + MO_TIMESTAMP), piece);
    message->setHeaderReserved(byteArrayToUint16(psrc + MO_HDRRESERVED));
    while ((piece = strtok_r(nullptr, "\n", &position)) != nullptr) {
        message->addRecord(piece);
    }
    return message.release();
}

bool PlainGps::operator==(const MessageBase& msg) const {
    const auto* other = dynamic_cast<const PlainGps*>(&msg);
    if (other == nullptr || gpsStrings.size() != other->gpsStrings.size()) {
        return false;
    }
    for (const auto& entry : gpsStrings) {
        const auto iter = other->gpsStrings.find(entry.first);
        if (iter == other->gpsStrings.end() || iter->second != entry.second) {
            return false;
        }
    }
    return true;
}

std::ostream& PlainGps::print(std::ostream& os) const {
    const std::ios_base::fmtflags oldflags = os.flags(std::ios_base::hex | std::ios_base::fixed);
    const char oldfill = os.fill('0');
    os << static_cast<const MessageBase&>(*this) << "  GPS         |";
    for (const auto& entry : gpsStrings) {
        std::string sentence = entry.second;
        sentence.pop_back();
        if (!sentence.empty() && sentence.back() == '\r') {
            sentence.pop_back();
        }
        os << ' ' << sentence;
    }
    os.flags(oldflags);
    os.fill(oldfill);
    return os;
}

std::string PlainGps::toString() const {
    std::ostringstream os;
    print(os);
    return os.str();
}

std::string PlainGps::getSourceChannel() const {
    return "GPS";
}

uint64_t PlainGps::getSourceChannelID() const {
    return MessageBase::getSourceChannelID(BUSID_GPS, 0, mbnr);
}
