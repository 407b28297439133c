#include "libvextrace/nmeaNumbers.h"

#include "libvextrace/internal/NmeaCoordinate.h"
#include "libvextrace/internal/NmeaFieldStream.h"
#include "libvextrace/internal/NmeaNumberReader.h"

namespace vextrace {

namespace {

using internal::NmeaCoordinate;
using internal::NmeaFieldStream;
using internal::NmeaNumberReader;

constexpr double KMH_PER_KNOT = 1.852;

bool beginsWith(std::string_view item, char c) {
    return !item.empty() && item.front() == c;
}

std::string_view nextField(NmeaFieldStream& s) {
    std::string_view item;
    s.readField(item, ',');
    return item;
}

uint64_t toNumber(std::string_view item) {
    return static_cast<uint64_t>(NmeaNumberReader::integer(item));
}

// Reads a coordinate and its hemisphere, whose letter makes it negative.
double readCoordinate(const NmeaNumberReader& reader, NmeaFieldStream& s, char negativeHemisphere) {
    const double degrees = NmeaCoordinate(reader, nextField(s)).degrees();
    return beginsWith(nextField(s), negativeHemisphere) ? -degrees : degrees;
}

}  // namespace

void readNumbers(std::string_view sentence, GPSTraceMessage::numeric_gprmc_t& gprmc) {
    const NmeaNumberReader reader;
    NmeaFieldStream s(sentence);
    nextField(s);  // sentence code
    gprmc.timeUTC = toNumber(nextField(s));
    gprmc.status = beginsWith(nextField(s), 'A');
    gprmc.latitude = readCoordinate(reader, s, 'S');
    gprmc.longitude = readCoordinate(reader, s, 'W');
    gprmc.speed = reader.real(nextField(s)) * KMH_PER_KNOT;
    gprmc.course = reader.real(nextField(s));
    gprmc.dateUTC = toNumber(nextField(s));
}

void readNumbers(std::string_view sentence, GPSTraceMessage::numeric_gpgga_t& gpgga) {
    const NmeaNumberReader reader;
    NmeaFieldStream s(sentence);
    std::string_view item;
    s.readField(item, ',');  // sentence code
    s.readField(item, ',');  // leaves the code there where the sentence has no comma
    gpgga.status = !item.empty() && item.front() != '\0';
    gpgga.timeUTC = toNumber(item);
    gpgga.latitude = readCoordinate(reader, s, 'S');
    gpgga.longitude = readCoordinate(reader, s, 'W');
    nextField(s);  // quality indicator
    gpgga.numberSatellites = static_cast<uint16_t>(NmeaNumberReader::integer(nextField(s)));
    nextField(s);  // horizontal dilution of precision
    gpgga.antennaAltitude = reader.real(nextField(s));
}

}  // namespace vextrace
