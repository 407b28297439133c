#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "libvextrace/GPSTraceMessage.h"
#include "tools/nmea/sentence.h"

namespace vextools {

/// What the RMC and GGA sentences of one message say, a value only where the receiver sent one that
/// makes sense. The position is that of the RMC sentence when there is one, else of the GGA's.
struct Fix {
    timeStamp_t stamp = 0;            ///< of the message: nanoseconds since 1970, UTC; 0 is unknown
    bool valid = false;               ///< the receiver calls it valid, and it has a position
    std::optional<double> latitude;   ///< degrees, north positive, -90 to 90
    std::optional<double> longitude;  ///< degrees, east positive, -180 to 180
    std::optional<double> altitude;   ///< metres, -1e8 to 1e8
    std::optional<double> speed;      ///< km/h, 0 to 1e6
    std::optional<double> course;     ///< degrees, 0 to 360
    std::optional<unsigned> satellites;   ///< in use, 0 to 999
    std::optional<unsigned> quality;      ///< of GGA: 0 no fix, 1 GPS, 2 differential, ...; to 999
    std::optional<double> hdop;           ///< horizontal dilution of precision, 0 to 1e6
    std::optional<Checksum> rmcChecksum;  ///< nothing where there is no RMC sentence
    std::optional<Checksum> ggaChecksum;

    /// Whether a sentence that it comes from has a wrong checksum.
    bool isDoubtful() const;
};

/// The fix of a message; nothing where it holds neither RMC nor GGA.
std::optional<Fix> fixOf(const GPSTraceMessage& message);

}  // namespace vextools
