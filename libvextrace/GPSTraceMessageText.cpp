#include <ostream>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/internal/TextStream.h"
#include "libvextrace/internal/TraceFormat.h"
#include "libvextrace/internal/nmeaFields.h"

using vextrace::internal::NmeaField;
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

// Removes the last character, whatever it is: the line feed of every sentence but a bare "$G",
// which is stored as "$GP" and meant to be shown as "$G".
std::string_view withoutLineEnd(std::string_view sentence) {
    sentence.remove_suffix(1);
    if (!sentence.empty() && sentence.back() == '\r') {
        sentence.remove_suffix(1);
    }
    return sentence;
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
