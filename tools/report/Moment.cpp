#include "tools/report/Moment.h"

#include <fmt/core.h>

#include <cmath>
#include <utility>

#include "libvextrace/serialise.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

std::string shownLine(const GPSTraceMessage& message) {
    const std::string line = static_cast<const MessageBase&>(message).toString();
    if (line.size() <= Moment::LONGEST_LINE) {
        return escaped(line);
    }
    return fmt::format("{} ... ({} bytes more)", escaped(line.substr(0, Moment::LONGEST_LINE)),
                       line.size() - Moment::LONGEST_LINE);
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

Moment::Texts textsOf(const GPSTraceMessage& message, const Fix& fix) {
    return {placeOf(message, fix), shownLine(message)};
}

std::string coordinateText(double degrees, char positive, char negative) {
    const double size = std::fabs(degrees);
    const double whole = std::floor(size);
    return fmt::format("{:.0f}°{:.3f} {}", whole, (size - whole) * 60,
                       std::signbit(degrees) ? negative : positive);
}

}  // namespace

Moment::Moment(Fix ofFix, std::unique_ptr<GPSTraceMessage> ofMessage, uint64_t ofNumber,
               size_t ofTrace)
    : fix(std::move(ofFix)), number(ofNumber), trace(ofTrace), message(std::move(ofMessage)) {}

void Moment::settle() {
    if (message) {
        bytes = serialise(*message);
        if (bytes.size() > LONGEST_LINE) {
            ready = textsOf(*message, fix);
            bytes = {};
        }
        message.reset();
    }
}

size_t Moment::footprint() const {
    return sizeof(Moment) + bytes.capacity() + ready.traceLine.capacity() +
           ready.position.capacity();
}

Moment::Texts Moment::texts() const {
    if (message) {
        return textsOf(*message, fix);
    }
    if (bytes.empty()) {
        return ready;
    }
    GPSTraceMessage::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    return textsOf(dynamic_cast<const GPSTraceMessage&>(*decoded.message), fix);
}

std::string positionText(double latitude, double longitude) {
    return coordinateText(latitude, 'N', 'S') + ", " + coordinateText(longitude, 'E', 'W');
}

}  // namespace vextrace::tools
