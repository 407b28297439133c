#include "tools/report/Moment.h"

#include <fmt/core.h>

#include <cmath>

#include "libvextrace/serialise.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

std::string shownLine(const GPSTraceMessage& message, size_t longest) {
    const std::string line = static_cast<const MessageBase&>(message).toString();
    if (line.size() <= longest) {
        return escaped(line);
    }
    return fmt::format("{} ... ({} bytes more)", escaped(line.substr(0, longest)),
                       line.size() - longest);
}

// The RDB text up to its altitude.
std::string withoutAltitude(const std::string& rdb) {
    return rdb.substr(0, rdb.find(", ", rdb.find(", ") + 1));
}

// The library's text of the sentence that the fix takes its position from. A message may hold
// another one, which the text of the whole message would prefer.
std::string placeOf(const GPSTraceMessage& message, const Fix& fix) {
    if (!fix.valid) {
        return "";
    }
    const std::string rdb = message.rdbText(fix.usesRmc ? GPSTraceMessage::NMEA_DATA_GPRMC
                                                        : GPSTraceMessage::NMEA_DATA_GPGGA);
    return rdb.empty() ? positionText(*fix.latitude, *fix.longitude)
                       : escaped(withoutAltitude(rdb));
}

std::string coordinateText(double degrees, char positive, char negative) {
    const double size = std::fabs(degrees);
    const double whole = std::floor(size);
    return fmt::format("{:.0f}°{:.3f} {}", whole, (size - whole) * 60,
                       std::signbit(degrees) ? negative : positive);
}

}  // namespace

Moment::Texts textsOf(std::span<const uint8_t> message, const Fix& fix, size_t longest) {
    GPSTraceMessage::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(message.data(), message.size());
    const auto& gps = dynamic_cast<const GPSTraceMessage&>(*decoded.message);
    return {placeOf(gps, fix), shownLine(gps, longest)};
}

std::string positionText(double latitude, double longitude) {
    return coordinateText(latitude, 'N', 'S') + ", " + coordinateText(longitude, 'E', 'W');
}

}  // namespace vextrace::tools
