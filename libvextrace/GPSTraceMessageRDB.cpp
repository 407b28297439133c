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

// Writes both coordinates of a structure of fields.
template <class Fields>
void writePosition(std::ostream& os, const Fields& fields) {
    const NmeaNumberReader reader;
    os << std::fixed << std::setprecision(3);
    writeCoordinate(os, reader, fields.latitude, fields.latitudeHemisphere);
    os << ", ";
    writeCoordinate(os, reader, fields.longitude, fields.longitudeHemisphere);
}

bool hasPosition(const GPSTraceMessage::gpgga_t& gpgga) {
    return NmeaNumberReader::integer(gpgga.numberSatellites) != 0;
}

bool hasPosition(const GPSTraceMessage::gprmc_t& gprmc) {
    return gprmc.status == "A";
}

std::string positionText(const GPSTraceMessage::gpgga_t& gpgga) {
    TextStream line;
    writePosition(line.os, gpgga);
    if (!gpgga.antennaAltitude.empty()) {
        line.os << ", " << gpgga.antennaAltitude << gpgga.antennaAltitudeUnit;
    }
    return line.takeText();
}

std::string positionText(const GPSTraceMessage::gprmc_t& gprmc) {
    TextStream line;
    writePosition(line.os, gprmc);
    return line.takeText();
}

}  // namespace

std::string GPSTraceMessage::formatForRDB() {
    if (parseGGA() && hasPosition(gpgga)) {
        return positionText(gpgga);
    }
    if (parseRMC() && hasPosition(gprmc)) {
        return positionText(gprmc);
    }
    return {};
}

std::string GPSTraceMessage::rdbText() const {
    if (const gpgga_t fields = splitGGA(); hasPosition(fields)) {
        return positionText(fields);
    }
    if (const gprmc_t fields = splitRMC(); hasPosition(fields)) {
        return positionText(fields);
    }
    return {};
}
