#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/NmeaFieldStream.h"
#include "libvextrace/nmeaFields.h"
#include "libvextrace/nmeaNumber.h"

namespace {

constexpr double KMH_PER_KNOT = 1.852;

bool beginsWith(std::string_view item, char c) {
    return !item.empty() && item.front() == c;
}

// Reads the fields behind field 0 into their members.
template <class Fields, size_t COUNT>
void splitFields(NmeaFieldStream& s, std::string_view item, const NmeaField<Fields> (&table)[COUNT],
                 Fields& fields) {
    for (size_t i = 0; i < COUNT; ++i) {
        s.readField(item, i + 1 < COUNT ? ',' : '*');
        fields.*table[i].member = item;
        item = {};
    }
}

// Reads the next field into the emptied buffer.
std::string_view nextField(NmeaFieldStream& s, std::string_view& item) {
    item = {};
    s.readField(item, ',');
    return item;
}

uint64_t toNumber(std::string_view item) {
    return static_cast<uint64_t>(NmeaNumberReader::integer(item));
}

// Reads a coordinate and its hemisphere, whose letter makes it negative.
double readCoordinate(const NmeaNumberReader& number, NmeaFieldStream& s, std::string_view& item,
                      char negativeHemisphere) {
    const double degrees = NmeaCoordinate(number, nextField(s, item)).degrees();
    return beginsWith(nextField(s, item), negativeHemisphere) ? -degrees : degrees;
}

void readNumbers(const std::string& sentence, GPSTraceMessage::numeric_gprmc_t& gprmc) {
    const NmeaNumberReader number;
    NmeaFieldStream s(sentence);
    std::string_view item;
    s.readField(item, ',');
    gprmc.timeUTC = toNumber(nextField(s, item));
    gprmc.status = beginsWith(nextField(s, item), 'A');
    gprmc.latitude = readCoordinate(number, s, item, 'S');
    gprmc.longitude = readCoordinate(number, s, item, 'W');
    gprmc.speed = number.real(nextField(s, item)) * KMH_PER_KNOT;
    gprmc.course = number.real(nextField(s, item));
    gprmc.dateUTC = toNumber(nextField(s, item));
}

void readNumbers(const std::string& sentence, GPSTraceMessage::numeric_gpgga_t& gpgga) {
    const NmeaNumberReader number;
    NmeaFieldStream s(sentence);
    std::string_view item;
    s.readField(item, ',');
    s.readField(item, ',');  // into the unemptied buffer, as parseGGA does
    gpgga.status = !item.empty() && item.front() != '\0';
    gpgga.timeUTC = toNumber(item);
    gpgga.latitude = readCoordinate(number, s, item, 'S');
    gpgga.longitude = readCoordinate(number, s, item, 'W');
    nextField(s, item);  // quality indicator
    gpgga.numberSatellites = static_cast<uint16_t>(NmeaNumberReader::integer(nextField(s, item)));
    nextField(s, item);  // horizontal dilution of precision
    gpgga.antennaAltitude = number.real(nextField(s, item));
}

}  // namespace

bool GPSTraceMessage::parseRMC() {
    const auto iter = gpsStrings.find(std::string_view(GPRMC));
    if (iter == gpsStrings.end()) {
        return false;
    }
    NmeaFieldStream s(iter->second);
    std::string_view item;
    s.readField(item, ',');
    item = {};
    splitFields(s, item, RMC_FIELDS, gprmc);
    return true;
}

bool GPSTraceMessage::parseGGA() {
    const auto iter = gpsStrings.find(std::string_view(GPGGA));
    if (iter == gpsStrings.end()) {
        return false;
    }
    NmeaFieldStream s(iter->second);
    std::string_view item;
    // Unlike in parseRMC the buffer is not emptied behind field 0: existing traces are read with
    // the whole sentence as time where it holds no comma.
    s.readField(item, ',');
    splitFields(s, item, GGA_FIELDS, gpgga);
    return true;
}

bool GPSTraceMessage::getGPRMC(numeric_gprmc_t& numericGprmc) const {
    const auto iter = gpsStrings.find(std::string_view(GPRMC));
    if (iter == gpsStrings.end()) {
        return false;
    }
    readNumbers(iter->second, numericGprmc);
    return true;
}

bool GPSTraceMessage::getGPGGA(numeric_gpgga_t& numericGpgga) const {
    const auto iter = gpsStrings.find(std::string_view(GPGGA));
    if (iter == gpsStrings.end()) {
        return false;
    }
    readNumbers(iter->second, numericGpgga);
    return true;
}

double GPSTraceMessage::coordinateToDouble(const std::string& degree) {
    return NmeaCoordinate(NmeaNumberReader(), degree).degrees();
}
