#include <iomanip>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/internal/NmeaCoordinate.h"
#include "libvextrace/internal/TextStream.h"

using vextrace::internal::NmeaCoordinate;
using vextrace::internal::NmeaNumberReader;
using vextrace::internal::TextStream;

namespace {

void writeCoordinate(std::ostream& os, const NmeaNumberReader& reader, std::string_view text,
                     std::string_view hemisphere) {
    const NmeaCoordinate coordinate(reader, text);
    os << coordinate.deg << "\xC2\xB0" << coordinate.rem << ' ' << hemisphere;
}

bool hasPosition(const GPSTraceMessage::gpgga_t& gpgga) {
    return NmeaNumberReader::integer(gpgga.numberSatellites) != 0;
}

bool hasPosition(const GPSTraceMessage::gprmc_t& gprmc) {
    return gprmc.status == "A";
}

void writeAltitude(std::ostream& os, const GPSTraceMessage::gpgga_t& gpgga) {
    if (!gpgga.antennaAltitude.empty()) {
        os << ", " << gpgga.antennaAltitude << gpgga.antennaAltitudeUnit;
    }
}

void writeAltitude(std::ostream& /*os*/, const GPSTraceMessage::gprmc_t& /*gprmc*/) {}

// Empty where there is no position, and never where there is one.
template <class Fields>
std::string positionText(const Fields& fields) {
    if (!hasPosition(fields)) {
        return {};
    }
    const NmeaNumberReader reader;
    TextStream line;
    std::ostream& os = line.os;
    os << std::fixed << std::setprecision(3);
    writeCoordinate(os, reader, fields.latitude, fields.latitudeHemisphere);
    os << ", ";
    writeCoordinate(os, reader, fields.longitude, fields.longitudeHemisphere);
    writeAltitude(os, fields);
    return line.takeText();
}

}  // namespace

std::string GPSTraceMessage::formatForRDB() {
    std::string rdb;
    if (parseGGA()) {
        rdb = positionText(gpgga);
    }
    if (rdb.empty() && parseRMC()) {
        rdb = positionText(gprmc);
    }
    return rdb;
}

std::string GPSTraceMessage::rdbText() const {
    std::string rdb = rdbText(NMEA_DATA_GPGGA);
    if (rdb.empty()) {
        rdb = rdbText(NMEA_DATA_GPRMC);
    }
    return rdb;
}

std::string GPSTraceMessage::rdbText(nmeaDataType_t sentence) const {
    switch (sentence) {
        case NMEA_DATA_GPRMC:
            return positionText(splitRMC());
        case NMEA_DATA_GPGGA:
            return positionText(splitGGA());
    }
    return {};
}
