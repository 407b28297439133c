#include "tools/report/Moment.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "libvextrace/serialise.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

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

std::string Moment::Texts::shownLine(size_t longest) const {
    const size_t all = traceLine.size() + further;
    const size_t shown = std::min(traceLine.size(), longest);
    const std::string text = escaped(std::string_view(traceLine).substr(0, shown));
    return all == shown ? text : fmt::format("{} ... ({} bytes more)", text, all - shown);
}

Moment::Texts textsOf(std::span<const uint8_t> message, const Fix& fix) {
    GPSTraceMessage::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(message.data(), message.size());
    const auto& gps = dynamic_cast<const GPSTraceMessage&>(*decoded.message);
    const std::string line = static_cast<const MessageBase&>(gps).toString();
    const std::string front = line.substr(0, Moment::LONGEST_LINE);
    return {placeOf(gps, fix), front, line.size() - front.size()};
}

std::string positionText(double latitude, double longitude) {
    return coordinateText(latitude, 'N', 'S') + ", " + coordinateText(longitude, 'E', 'W');
}

}  // namespace vextrace::tools
