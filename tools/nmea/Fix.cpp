#include "tools/nmea/Fix.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>

namespace vextools {

namespace {

// Positions of fields in their sentences; those behind the last one used are not looked for.
enum RmcField : size_t {
    RMC_STATUS = 2,
    RMC_LATITUDE = 3,
    RMC_LONGITUDE = 5,
    RMC_SPEED = 7,
    RMC_COURSE = 8,
    RMC_FIELDS
};
enum GgaField : size_t {
    GGA_LATITUDE = 2,
    GGA_LONGITUDE = 4,
    GGA_QUALITY = 6,
    GGA_SATELLITES = 7,
    GGA_HDOP = 8,
    GGA_ALTITUDE = 9,
    GGA_ALTITUDE_UNIT = 10,
    GGA_FIELDS
};

constexpr double MAX_COURSE = 360;

// The first fields of a sentence; empty where it has fewer.
template <size_t COUNT>
std::array<std::string_view, COUNT> fieldsOf(std::string_view sentence) {
    std::array<std::string_view, COUNT> fields;
    const char* next = sentence.data();
    const char* const end = next + sentence.size();
    for (std::string_view& field : fields) {
        const char* const begin = next;
        while (next != end && *next != ',' && *next != '*' && *next != '\r' && *next != '\n') {
            ++next;
        }
        field = {begin, static_cast<size_t>(next - begin)};
        if (next == end || *next != ',') {
            break;
        }
        ++next;
    }
    return fields;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Digits with at most one point. What the library makes of anything else is no number of the
// receiver's.
bool isUnsignedNumber(std::string_view text) {
    const auto digits = std::count_if(text.begin(), text.end(), isDigit);
    const auto points = std::count(text.begin(), text.end(), '.');
    return digits > 0 && points <= 1 && digits + points == std::ssize(text);
}

bool isNumber(std::string_view text) {
    const bool isSigned = !text.empty() && (text[0] == '-' || text[0] == '+');
    return isUnsignedNumber(text.substr(isSigned ? 1 : 0));
}

// Minutes are below 60, but for receivers that round up to it.
bool hasMinutes(std::string_view coordinate) {
    const size_t point = std::min(coordinate.find('.'), coordinate.size());
    const std::string_view minutes = coordinate.substr(point < 2 ? 0 : point - 2);
    return point < 2 || minutes[0] < '6' ||
           (minutes[0] == '6' && minutes.find_first_not_of("0.", 1) == std::string_view::npos);
}

bool isCoordinate(std::string_view text, std::string_view hemisphere, char positive,
                  char negative) {
    return isUnsignedNumber(text) && hasMinutes(text) && hemisphere.size() == 1 &&
           (hemisphere[0] == positive || hemisphere[0] == negative);
}

// Each stands before its hemisphere, latitude before longitude.
void setPosition(const std::string_view* texts, double latitude, double longitude, Fix& fix) {
    if (isCoordinate(texts[0], texts[1], 'N', 'S') && isCoordinate(texts[2], texts[3], 'E', 'W') &&
        std::fabs(latitude) <= 90 && std::fabs(longitude) <= 180) {
        fix.latitude = latitude;
        fix.longitude = longitude;
    }
}

std::optional<unsigned> wholeNumber(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

std::optional<double> decimalNumber(std::string_view text) {
    double number = 0;
    if (!isUnsignedNumber(text) ||
        std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) {
        return std::nullopt;
    }
    return number;
}

void readRmc(const GPSTraceMessage& message, std::string_view sentence, Fix& fix) {
    const auto fields = fieldsOf<RMC_FIELDS>(sentence);
    GPSTraceMessage::numeric_gprmc_t numbers;
    message.getGPRMC(numbers);
    fix.rmcChecksum = storedChecksum(sentence);
    setPosition(&fields[RMC_LATITUDE], numbers.latitude, numbers.longitude, fix);
    fix.valid = numbers.status && fix.latitude.has_value();
    if (isUnsignedNumber(fields[RMC_SPEED]) && std::isfinite(numbers.speed)) {
        fix.speed = numbers.speed;
    }
    if (isUnsignedNumber(fields[RMC_COURSE]) && numbers.course <= MAX_COURSE) {
        fix.course = numbers.course;
    }
}

void readGga(const GPSTraceMessage& message, std::string_view sentence, Fix& fix) {
    const auto fields = fieldsOf<GGA_FIELDS>(sentence);
    GPSTraceMessage::numeric_gpgga_t numbers;
    message.getGPGGA(numbers);
    fix.ggaChecksum = storedChecksum(sentence);
    fix.quality = wholeNumber(fields[GGA_QUALITY]);
    fix.satellites = wholeNumber(fields[GGA_SATELLITES]);
    fix.hdop = decimalNumber(fields[GGA_HDOP]);
    const std::string_view unit = fields[GGA_ALTITUDE_UNIT];
    if (isNumber(fields[GGA_ALTITUDE]) && std::isfinite(numbers.antennaAltitude) &&
        (unit.empty() || unit == "M")) {
        fix.altitude = numbers.antennaAltitude;
    }
    if (!fix.rmcChecksum) {
        setPosition(&fields[GGA_LATITUDE], numbers.latitude, numbers.longitude, fix);
        fix.valid = fix.quality.value_or(0) != 0 && fix.latitude.has_value();
    }
}

}  // namespace

bool Fix::isDoubtful() const {
    return rmcChecksum == Checksum::WRONG || ggaChecksum == Checksum::WRONG;
}

std::optional<Fix> fixOf(const GPSTraceMessage& message) {
    const std::string_view rmc = message.getSentence(GPSTraceMessage::GPRMC);
    const std::string_view gga = message.getSentence(GPSTraceMessage::GPGGA);
    if (rmc.empty() && gga.empty()) {
        return std::nullopt;
    }
    Fix fix;
    fix.stamp = message.getTimeStamp();
    if (!rmc.empty()) {
        readRmc(message, rmc, fix);
    }
    if (!gga.empty()) {
        readGga(message, gga, fix);
    }
    return fix;
}

}  // namespace vextools
