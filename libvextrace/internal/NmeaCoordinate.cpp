#include "libvextrace/internal/NmeaCoordinate.h"

namespace vextrace::internal {

NmeaCoordinate::NmeaCoordinate(const NmeaNumberReader& reader, std::string_view text) {
    const NmeaNumberReader::Number number = reader.read(text);
    deg = static_cast<uint16_t>(number.integer / 100);
    rem = number.real - 100 * deg;
}

double NmeaCoordinate::degrees() const {
    const double fraction = rem / 60.0;
    return deg + fraction;
}

}  // namespace vextrace::internal
