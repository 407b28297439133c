#include "tests/model/GPSModel.h"

#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace {

const size_t HEADER_LENGTH = 14;

uint64_t integerOf(const std::string& text) {
    return static_cast<uint64_t>(static_cast<int64_t>(std::strtol(text.c_str(), nullptr, 10)));
}

double realOf(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    return end == text.c_str() ? 0.0 : value;  // MinGW's strtod makes -0 of a sign alone
}

struct Coordinate {
    uint16_t deg;
    double rem;
};

Coordinate coordinateOf(const std::string& text) {
    Coordinate coordinate;
    coordinate.deg = static_cast<uint16_t>(std::strtol(text.c_str(), nullptr, 10) / 100);
    const int product = 100 * static_cast<int>(coordinate.deg);
    coordinate.rem = realOf(text) - static_cast<double>(product);
    return coordinate;
}

double degreesOf(const std::string& text) {
    Coordinate coordinate = coordinateOf(text);
    coordinate.rem = coordinate.rem / 60.0;
    return coordinate.deg + coordinate.rem;
}

void writeNumber(uint8_t*& pdest, uint64_t value, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        *pdest++ = static_cast<uint8_t>(value >> shift & 0xFF);
    }
}

uint64_t readNumber(const uint8_t* psrc, int width) {
    uint64_t value = 0;
    for (int i = 0; i < width; ++i) {
        value = value * 256 + psrc[i];
    }
    return value;
}

std::string nextField(std::stringstream& s) {
    std::string item;
    std::getline(s, item, ',');
    return item;
}

// What an exhausted stream leaves in the item becomes the field; the item is empty behind it.
void readField(std::stringstream& s, std::string& item, char delimiter, std::string& field) {
    std::getline(s, item, delimiter);
    field = item;
    item.clear();
}

double readCoordinate(std::stringstream& s, char negativeHemisphere) {
    const double degrees = degreesOf(nextField(s));
    return nextField(s)[0] == negativeHemisphere ? -degrees : degrees;
}

void dump(std::ostream& os, const GPSModel::Texts& fields, const GPSModel::Texts& labels) {
    const std::ios_base::fmtflags oldflags = os.flags();
    const char oldfill = os.fill();
    os.flags(std::ios_base::hex | std::ios_base::fixed);
    os.fill('0');
    for (size_t i = 0; i < fields.size(); ++i) {
        os << std::to_string(i + 1) + ". " + labels.at(i) + " = " << fields.at(i) << std::endl;
    }
    os.flags(oldflags);
    os.fill(oldfill);
}

}  // namespace

GPSModel::Texts GPSModel::Rmc::texts() const {
    return {timeUTC, status, latitude, latitudeHemisphere, longitude,          longitudeHemisphere,
            speed,   course, dateUTC,  variation,          variationDirection, mode};
}

GPSModel::Texts GPSModel::Gga::texts() const {
    return {
        timeUTC,    latitude, latitudeHemisphere, longitude,    longitudeHemisphere, quality,
        satellites, dilution, altitude,           altitudeUnit, separation,          separationUnit,
        age,        station};
}

GPSModel::GPSModel(uint64_t timeStamp, const std::string& record) : stamp(timeStamp) {
    store(record);
}

GPSModel::GPSModel(uint64_t timeStamp, const uint8_t* data, size_t dataSize) : stamp(timeStamp) {
    if (data == nullptr && dataSize > 0) {
        throw std::logic_error("null");
    }
    std::string record;
    for (size_t i = 0; i < dataSize; ++i) {
        record += static_cast<char>(data[i]);
    }
    store(record);
}

void GPSModel::store(const std::string& record) {
    std::string s = record;
    if (s.empty() || s.back() != '\n') {
        s += '\n';
    }
    if (s[0] == '$' && s[1] == 'G') {
        s[2] = 'P';
    }
    sentences.insert(std::make_pair(s.substr(0, 6), s));
}

void GPSModel::addRecord(const std::string& record) {
    store(record);
    parseRMC();
    parseGGA();
}

bool GPSModel::parseRMC() {
    const auto iter = sentences.find("$GPRMC");
    if (iter == sentences.end()) {
        return false;
    }
    std::stringstream s(iter->second);
    std::string item;
    std::getline(s, item, ',');
    item.clear();
    for (std::string* field : {&rmc.timeUTC, &rmc.status, &rmc.latitude, &rmc.latitudeHemisphere,
                               &rmc.longitude, &rmc.longitudeHemisphere, &rmc.speed, &rmc.course,
                               &rmc.dateUTC, &rmc.variation, &rmc.variationDirection}) {
        readField(s, item, ',', *field);
    }
    readField(s, item, '*', rmc.mode);
    return true;
}

// Field 0 stays in the item: a sentence without comma gives its whole text as field 1.
bool GPSModel::parseGGA() {
    const auto iter = sentences.find("$GPGGA");
    if (iter == sentences.end()) {
        return false;
    }
    std::stringstream s(iter->second);
    std::string item;
    std::getline(s, item, ',');
    for (std::string* field :
         {&gga.timeUTC, &gga.latitude, &gga.latitudeHemisphere, &gga.longitude,
          &gga.longitudeHemisphere, &gga.quality, &gga.satellites, &gga.dilution, &gga.altitude,
          &gga.altitudeUnit, &gga.separation, &gga.separationUnit, &gga.age}) {
        readField(s, item, ',', *field);
    }
    readField(s, item, '*', gga.station);
    return true;
}

std::string GPSModel::getString() const {
    if (sentences.empty()) {
        return "";
    }
    return sentences.begin()->second;
}

bool GPSModel::holds(const std::string& code) const {
    return sentences.find(code) != sentences.end();
}

bool GPSModel::getGPRMC(RmcNumbers& numbers) const {
    const auto iter = sentences.find("$GPRMC");
    if (iter == sentences.end()) {
        return false;
    }
    std::stringstream s(iter->second);
    nextField(s);
    numbers.timeUTC = integerOf(nextField(s));
    numbers.status = nextField(s)[0] == 'A';
    numbers.latitude = readCoordinate(s, 'S');
    numbers.longitude = readCoordinate(s, 'W');
    numbers.speed = realOf(nextField(s)) * 1.852;
    numbers.course = realOf(nextField(s));
    numbers.dateUTC = integerOf(nextField(s));
    return true;
}

bool GPSModel::getGPGGA(GgaNumbers& numbers) const {
    const auto iter = sentences.find("$GPGGA");
    if (iter == sentences.end()) {
        return false;
    }
    std::stringstream s(iter->second);
    std::string item;
    std::getline(s, item, ',');
    std::getline(s, item, ',');
    numbers.timeUTC = integerOf(item);
    numbers.status = item[0] != '\0';
    numbers.latitude = readCoordinate(s, 'S');
    numbers.longitude = readCoordinate(s, 'W');
    nextField(s);
    numbers.numberSatellites = static_cast<uint16_t>(integerOf(nextField(s)));
    nextField(s);
    numbers.antennaAltitude = realOf(nextField(s));
    return true;
}

std::string GPSModel::formatForRDB() {
    std::string latitude;
    std::string latitudeHemisphere;
    std::string longitude;
    std::string longitudeHemisphere;
    std::string antennaAltitude;
    std::string antennaAltitudeUnit;
    if (parseGGA() && !gga.satellites.empty() && integerOf(gga.satellites) != 0) {
        latitude = gga.latitude;
        latitudeHemisphere = gga.latitudeHemisphere;
        longitude = gga.longitude;
        longitudeHemisphere = gga.longitudeHemisphere;
        antennaAltitude = gga.altitude;
        antennaAltitudeUnit = gga.altitudeUnit;
    } else if (parseRMC() && rmc.status == "A") {
        latitude = rmc.latitude;
        latitudeHemisphere = rmc.latitudeHemisphere;
        longitude = rmc.longitude;
        longitudeHemisphere = rmc.longitudeHemisphere;
    } else {
        return "";
    }
    const Coordinate north = coordinateOf(latitude);
    const Coordinate east = coordinateOf(longitude);
    std::ostringstream os;
    os << std::fixed << std::setprecision(3);
    os << north.deg << "\xC2\xB0" << north.rem << " " << latitudeHemisphere;
    os << ", ";
    os << east.deg << "\xC2\xB0" << east.rem << " " << longitudeHemisphere;
    if (!antennaAltitude.empty()) {
        os << ", " << antennaAltitude << antennaAltitudeUnit;
    }
    return os.str();
}

size_t GPSModel::getSize() const {
    size_t size = 12;
    for (const auto& [code, sentence] : sentences) {
        size += sentence.size();
    }
    return size;
}

void GPSModel::write(uint8_t*& pdest) const {
    writeNumber(pdest, getSize(), 2);
    writeNumber(pdest, id, 2);
    writeNumber(pdest, reserved, 2);
    writeNumber(pdest, stamp, 8);
    for (const auto& [code, sentence] : sentences) {
        std::memcpy(pdest, sentence.data(), sentence.size());
        pdest += sentence.size();
    }
}

std::string GPSModel::write() const {
    std::vector<uint8_t> bytes(getSize() + 2);
    uint8_t* pdest = bytes.data();
    write(pdest);
    return {bytes.data(), pdest};
}

bool GPSModel::readFrom(const uint8_t* psrc, size_t len) {
    if (len < HEADER_LENGTH) {
        return false;
    }
    reserved = static_cast<uint16_t>(readNumber(psrc + 4, 2));
    stamp = readNumber(psrc + 6, 8);
    std::vector<char> copy(len + 1, '\0');
    std::memcpy(copy.data(), psrc, len);
    const char* line = std::strtok(copy.data() + HEADER_LENGTH, "\n");
    if (line == nullptr) {
        return false;
    }
    store(line);
    while ((line = std::strtok(nullptr, "\n")) != nullptr) {
        addRecord(line);
    }
    return true;
}

std::optional<GPSModel> GPSModel::read(const std::string& bytes) {
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
    GPSModel model;
    return model.readFrom(exact.data(), exact.size()) ? std::optional(model) : std::nullopt;
}

GPSModel GPSModel::of(uint64_t timeStamp, const std::vector<std::string>& sentences) {
    GPSModel model(timeStamp, sentences.at(0));
    for (size_t i = 1; i < sentences.size(); ++i) {
        model.addRecord(sentences.at(i));
    }
    return model;
}

bool GPSModel::equals(const GPSModel& other) const {
    return sentences == other.sentences;
}

uint64_t GPSModel::getSourceChannelID() const {
    return mbnr * uint64_t{0x100000000} + uint64_t{13} * 256 + 0;
}

void GPSModel::print(std::ostream& os) const {
    const std::ios_base::fmtflags oldflags = os.flags();
    const char oldfill = os.fill();
    os.flags(std::ios_base::hex | std::ios_base::fixed);
    os.fill('0');
    os << std::setw(16) << stamp << ' ' << std::setw(8) << mbnr;
    os << "  GPS         |";
    for (const auto& [code, sentence] : sentences) {
        std::string copy = sentence;
        copy.erase(copy.size() - 1);
        if (!copy.empty() && copy.back() == '\r') {
            copy.erase(copy.size() - 1);
        }
        os << ' ' << copy;
    }
    os.flags(oldflags);
    os.fill(oldfill);
}

void GPSModel::dumpRmc(std::ostream& os, const Rmc& fields) {
    dump(os, fields.texts(),
         {"UTC time", "Status", "Latitude", "Latitude hemisphere", "Longitude",
          "Longitude hemisphere", "Speed", "Course", "UTC date", "Magnetic", "Magnetic direction",
          "Mode indicator"});
}

void GPSModel::dumpGga(std::ostream& os, const Gga& fields) {
    dump(os, fields.texts(),
         {"UTC time", "Latitude", "Latitude hemisphere", "Longitude", "Longitude hemisphere",
          "GPS quality indicator", "Number of satellites", "Horizontal delution", "Altitude",
          "Altitude unit", "Geodial separation", "Geodial unit", "Age GPS data", "Reference id"});
}
