#include "tests/model/GPSModel.h"

#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace {

const int RMC_COUNT = 12;
const int GGA_COUNT = 14;
const size_t HEADER_LENGTH = 14;

GPSModel::Fields emptyFields(int count) {
    GPSModel::Fields fields;
    for (int number = 1; number <= count; ++number) {
        fields[number] = "";
    }
    return fields;
}

uint64_t integerOf(const std::string& text) {
    return static_cast<uint64_t>(static_cast<int64_t>(std::strtol(text.c_str(), nullptr, 10)));
}

double realOf(const std::string& text) {
    return std::strtod(text.c_str(), nullptr);
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

std::string bigEndian(uint64_t value, int width) {
    std::string bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        bytes += static_cast<char>(static_cast<unsigned char>(value >> shift & 0xFF));
    }
    return bytes;
}

uint64_t numberAt(const std::string& bytes, size_t position, size_t width) {
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        value = value * 256 + static_cast<unsigned char>(bytes.at(position + i));
    }
    return value;
}

// The pieces of a NUL-terminated copy from the payload on.
std::vector<std::string> linesOf(const std::string& bytes) {
    std::vector<char> copy(bytes.begin(), bytes.end());
    copy.push_back('\0');
    std::vector<std::string> lines;
    char* line = std::strtok(copy.data() + HEADER_LENGTH, "\n");
    while (line != nullptr) {
        lines.emplace_back(line);
        line = std::strtok(nullptr, "\n");
    }
    return lines;
}

// Fields 1 to count; the last one ends at lastDelimiter, the others at a comma. Where field 0 stays
// in the buffer, a sentence without comma gives its whole text as field 1.
GPSModel::Fields split(const std::string& sentence, int count, char lastDelimiter,
                       bool emptyBehindCode) {
    GPSModel::Fields fields;
    std::stringstream s(sentence);
    std::string item;
    std::getline(s, item, ',');
    if (emptyBehindCode) {
        item.clear();
    }
    for (int number = 1; number <= count; ++number) {
        std::getline(s, item, number == count ? lastDelimiter : ',');
        fields[number] = item;
        item.clear();
    }
    return fields;
}

double signedDegrees(const std::string& text, const std::string& hemisphere, char negative) {
    const double degrees = degreesOf(text);
    return !hemisphere.empty() && hemisphere.at(0) == negative ? -degrees : degrees;
}

void dump(std::ostream& os, const GPSModel::Fields& fields,
          const std::vector<std::string>& labels) {
    const std::ios_base::fmtflags oldflags = os.flags();
    const char oldfill = os.fill();
    os.flags(std::ios_base::hex | std::ios_base::fixed);
    os.fill('0');
    for (int number = 1; number <= static_cast<int>(labels.size()); ++number) {
        const std::string& label = labels.at(static_cast<size_t>(number) - 1);
        os << std::to_string(number) + ". " + label + " = " << fields.at(number) << std::endl;
    }
    os.flags(oldflags);
    os.fill(oldfill);
}

}  // namespace

GPSModel::GPSModel() : rmc(emptyFields(RMC_COUNT)), gga(emptyFields(GGA_COUNT)) {}

GPSModel::GPSModel(uint64_t timeStamp, const std::string& record) : GPSModel() {
    stamp = timeStamp;
    store(record);
}

GPSModel::GPSModel(uint64_t timeStamp, const uint8_t* data, size_t dataSize) : GPSModel() {
    if (data == nullptr && dataSize > 0) {
        throw std::logic_error("null");
    }
    stamp = timeStamp;
    std::string record;
    for (size_t i = 0; i < dataSize; ++i) {
        record += static_cast<char>(data[i]);
    }
    store(record);
}

void GPSModel::store(const std::string& record) {
    std::string s = record;
    if (s.empty() || s.back() != '\n') {
        s += "\n";
    }
    if (s.substr(0, 2) == "$G") {
        s.at(2) = 'P';
    }
    sentences.insert({s.substr(0, 6), s});
}

void GPSModel::addRecord(const std::string& record) {
    store(record);
    parseRMC();
    parseGGA();
}

bool GPSModel::parseRMC() {
    if (!holds("$GPRMC")) {
        return false;
    }
    rmc = split(sentences.at("$GPRMC"), RMC_COUNT, '*', true);
    return true;
}

bool GPSModel::parseGGA() {
    if (!holds("$GPGGA")) {
        return false;
    }
    gga = split(sentences.at("$GPGGA"), GGA_COUNT, '*', false);
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
    if (!holds("$GPRMC")) {
        return false;
    }
    const Fields fields = split(sentences.at("$GPRMC"), 9, ',', true);
    numbers.timeUTC = integerOf(fields.at(1));
    numbers.status = !fields.at(2).empty() && fields.at(2).at(0) == 'A';
    numbers.latitude = signedDegrees(fields.at(3), fields.at(4), 'S');
    numbers.longitude = signedDegrees(fields.at(5), fields.at(6), 'W');
    numbers.speed = realOf(fields.at(7)) * 1.852;
    numbers.course = realOf(fields.at(8));
    numbers.dateUTC = integerOf(fields.at(9));
    return true;
}

bool GPSModel::getGPGGA(GgaNumbers& numbers) const {
    if (!holds("$GPGGA")) {
        return false;
    }
    const Fields fields = split(sentences.at("$GPGGA"), 9, ',', false);
    numbers.timeUTC = integerOf(fields.at(1));
    numbers.status = fields.at(1).c_str()[0] != '\0';
    numbers.latitude = signedDegrees(fields.at(2), fields.at(3), 'S');
    numbers.longitude = signedDegrees(fields.at(4), fields.at(5), 'W');
    numbers.numberSatellites = static_cast<uint16_t>(integerOf(fields.at(7)));
    numbers.antennaAltitude = realOf(fields.at(9));
    return true;
}

std::string GPSModel::formatForRDB() {
    std::string latitude;
    std::string latitudeHemisphere;
    std::string longitude;
    std::string longitudeHemisphere;
    std::string antennaAltitude;
    std::string antennaAltitudeUnit;
    if (parseGGA() && !gga.at(7).empty() && std::strtol(gga.at(7).c_str(), nullptr, 10) != 0) {
        latitude = gga.at(2);
        latitudeHemisphere = gga.at(3);
        longitude = gga.at(4);
        longitudeHemisphere = gga.at(5);
        antennaAltitude = gga.at(9);
        antennaAltitudeUnit = gga.at(10);
    } else if (parseRMC() && rmc.at(2) == "A") {
        latitude = rmc.at(3);
        latitudeHemisphere = rmc.at(4);
        longitude = rmc.at(5);
        longitudeHemisphere = rmc.at(6);
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

std::string GPSModel::write() const {
    std::string bytes =
        bigEndian(getSize(), 2) + bigEndian(22, 2) + bigEndian(reserved, 2) + bigEndian(stamp, 8);
    for (const auto& [code, sentence] : sentences) {
        bytes += sentence;
    }
    return bytes;
}

std::optional<GPSModel> GPSModel::read(const std::string& bytes) {
    if (bytes.size() < HEADER_LENGTH) {
        return std::nullopt;
    }
    const std::vector<std::string> lines = linesOf(bytes);
    if (lines.empty()) {
        return std::nullopt;
    }
    GPSModel model = of(numberAt(bytes, 6, 8), lines);
    model.reserved = static_cast<uint16_t>(numberAt(bytes, 4, 2));
    return model;
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

void GPSModel::dumpRmc(std::ostream& os, const Fields& fields) {
    dump(os, fields,
         {"UTC time", "Status", "Latitude", "Latitude hemisphere", "Longitude",
          "Longitude hemisphere", "Speed", "Course", "UTC date", "Magnetic", "Magnetic direction",
          "Mode indicator"});
}

void GPSModel::dumpGga(std::ostream& os, const Fields& fields) {
    dump(os, fields,
         {"UTC time", "Latitude", "Latitude hemisphere", "Longitude", "Longitude hemisphere",
          "GPS quality indicator", "Number of satellites", "Horizontal delution", "Altitude",
          "Altitude unit", "Geodial separation", "Geodial unit", "Age GPS data", "Reference id"});
}
