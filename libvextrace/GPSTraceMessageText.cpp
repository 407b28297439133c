#include <iomanip>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/nmeaFields.h"
#include "libvextrace/nmeaNumber.h"
#include "libvextrace/textStream.h"
#include "libvextrace/traceFormat.h"

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

void writeCoordinate(std::ostream& os, const NmeaNumberReader& number, const std::string& text,
                     const std::string& hemisphere) {
    const NmeaCoordinate coordinate(number, text);
    os << coordinate.deg << "\xC2\xB0" << coordinate.rem << ' ' << hemisphere;
}

// Writes the position of either sentence; both name its fields alike.
template <class Fields>
void writePosition(std::ostream& os, const Fields& fields) {
    const NmeaNumberReader number;
    os << std::fixed << std::setprecision(3);
    writeCoordinate(os, number, fields.latitude, fields.latitudeHemisphere);
    os << ", ";
    writeCoordinate(os, number, fields.longitude, fields.longitudeHemisphere);
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gprmc_t& g) {
    return dumpFields(os, RMC_FIELDS, g);
}

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gpgga_t& g) {
    return dumpFields(os, GGA_FIELDS, g);
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
    TextStream os;
    os << *this;
    return os.str();
}

std::string GPSTraceMessage::formatForRDB() {
    TextStream os;
    if (parseGGA() && NmeaNumberReader::integer(gpgga.numberSatellites) != 0) {
        writePosition(os, gpgga);
        if (!gpgga.antennaAltitude.empty()) {
            os << ", " << gpgga.antennaAltitude << gpgga.antennaAltitudeUnit;
        }
    } else if (parseRMC() && gprmc.status == "A") {
        writePosition(os, gprmc);
    }
    return os.str();
}
