#include <ostream>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/internal/TextStream.h"
#include "libvextrace/internal/TraceFormat.h"
#include "libvextrace/internal/nmeaFields.h"
#include "libvextrace/internal/traceLine.h"

using vextrace::internal::GPS_COLUMN;
using vextrace::internal::NmeaField;
using vextrace::internal::shownSentence;
using vextrace::internal::TextStream;
using vextrace::internal::TraceFormat;

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

}  // namespace

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gprmc_t& g) {
    return dumpFields(os, vextrace::internal::RMC_FIELDS, g);
}

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gpgga_t& g) {
    return dumpFields(os, vextrace::internal::GGA_FIELDS, g);
}

std::ostream& operator<<(std::ostream& os, const GPSTraceMessage& gps) {
    TraceFormat format(os);
    os << static_cast<const MessageBase&>(gps) << GPS_COLUMN;
    for (const auto& entry : gps.gpsStrings) {
        os << ' ' << shownSentence(entry.second);
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
