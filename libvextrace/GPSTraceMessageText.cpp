#include <iomanip>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/nmeaFields.h"
#include "libvextrace/nmeaNumber.h"
#include "libvextrace/textStream.h"
#include "libvextrace/traceFormat.h"

using vextrace::NmeaCoordinate;
using vextrace::NmeaField;
using vextrace::nmeaInteger;
using vextrace::NmeaNumberReader;
using vextrace::TextStream;
using vextrace::TraceFormat;

namespace {

template <class Fields, size_t COUNT>
std::ostream& dumpFields(std::ostream& os, const NmeaField<Fields> (&table)[COUNT],
                         const Fields& fields) {
    TraceFormat format(os);
    for (const NmeaField<Fields>& field : table) {
        os << field.label << fields.*field.member << std::endl;
    }
    format.restore();
    return os;
}

// The last character goes unseen: it is the line feed of every stored sentence but a bare "$G".
std::string_view withoutLineEnd(std::string_view sentence) {
    sentence.remove_suffix(1);
    if (!sentence.empty() && sentence.back() == '\r') {
        sentence.remove_suffix(1);
    }
    return sentence;
}

void writeCoordinate(std::ostream& os, const NmeaNumberReader& reader, std::string_view text,
                     std::string_view hemisphere) {
    const NmeaCoordinate coordinate(reader, text);
    os << coordinate.deg << "\xC2\xB0" << coordinate.rem << ' ' << hemisphere;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gprmc_t& g) {
    return dumpFields(os, vextrace::RMC_FIELDS, g);
}

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gpgga_t& g) {
    return dumpFields(os, vextrace::GGA_FIELDS, g);
}

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage& gps) {
    TraceFormat format(os);
    os << static_cast<const MessageBase&>(gps) << "  GPS         |";
    for (const auto& entry : gps.gpsStrings) {
        os << ' ' << withoutLineEnd(entry.second);
    }
    format.restore();
    return os;
}

std::ostream& GPSTraceMessage::print(std::ostream& os) const {
    return os << *this;
}

std::string GPSTraceMessage::toString() const {
    TextStream line;
    line.os << *this;
    return line.takeText();
}

std::string GPSTraceMessage::formatForRDB() {
    std::string_view latitude;
    std::string_view latitudeHemisphere;
    std::string_view longitude;
    std::string_view longitudeHemisphere;
    std::string_view antennaAltitude;
    std::string_view antennaAltitudeUnit;
    if (parseGGA() && nmeaInteger(gpgga.numberSatellites) != 0) {
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
