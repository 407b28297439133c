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

}  // namespace

std::string GPSTraceMessage::formatForRDB() {
    std::string_view latitude;
    std::string_view latitudeHemisphere;
    std::string_view longitude;
    std::string_view longitudeHemisphere;
    std::string_view antennaAltitude;
    std::string_view antennaAltitudeUnit;
    if (parseGGA() && NmeaNumberReader::integer(gpgga.numberSatellites) != 0) {
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
        return {};
    }

    const NmeaNumberReader reader;
    TextStream line;
    std::ostream& os = line.os;
    os << std::fixed << std::setprecision(3);
    writeCoordinate(os, reader, latitude, latitudeHemisphere);
    os << ", ";
    writeCoordinate(os, reader, longitude, longitudeHemisphere);
    if (!antennaAltitude.empty()) {
        os << ", " << antennaAltitude << antennaAltitudeUnit;
    }
    return line.takeText();
}
