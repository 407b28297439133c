#include "libvexstream/Fix.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>

#include "libvexstream/internal/FieldReader.h"

namespace vextrace {

namespace {

constexpr double MAX_LATITUDE = 90;
constexpr double MAX_LONGITUDE = 180;
constexpr double MAX_COURSE = 360;
// Greater than all that a receiver can mean.
constexpr double MAX_SPEED = 1e6;
constexpr double MAX_ALTITUDE = 1e8;
constexpr double MAX_HDOP = 1e6;
constexpr unsigned MAX_COUNT = 999;

constexpr double KMH_PER_KNOT = 1.852;

// So many digits are exact in a double, and so is the power of ten below them: one division gives
// the correctly rounded quotient.
constexpr double POWERS_OF_TEN[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// Where quotients are kept in more precision than double's they are rounded twice.
constexpr bool DIVISION_ROUNDS_ONCE = FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1;

// Not below, nor equal to, nor above any number.
constexpr double NO_NUMBER = std::numeric_limits<double>::quiet_NaN();

// Of a text of digits with at most one point.
double toDouble(std::string_view text) {
    double value = 0;
#ifdef __cpp_lib_to_chars
    const bool fits =
        std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
#else
    // Some standard libraries read no such numbers but by streams.
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    const bool fits = static_cast<bool>(stream >> value);
#endif
    return fits ? value : NO_NUMBER;
}

// The number of the next field, of digits with at most one point. What the library makes of
// anything else is no number of the receiver's; where that is one, this is the same, bit for bit.
double readNumber(FieldReader& fields) {
    const char* const begin = fields.position();
    uint64_t value = 0;
    size_t digits = fields.readDigits(value);
    const bool hasPoint = fields.read('.');
    const size_t decimals = hasPoint ? fields.readDigits(value) : 0;
    digits += decimals;
    const std::string_view text = fields.endField(begin);
    if (digits == 0 || text.size() != digits + (hasPoint ? 1 : 0)) {
        return NO_NUMBER;
    }
    return digits < std::size(POWERS_OF_TEN) && DIVISION_ROUNDS_ONCE
               ? static_cast<double>(static_cast<int64_t>(value)) / POWERS_OF_TEN[decimals]
               : toDouble(text);
}

// The same, where it is not too great.
std::optional<double> readUpTo(double greatest, FieldReader& fields, double unit = 1) {
    const double value = readNumber(fields) * unit;
    return value <= greatest ? std::optional(value) : std::nullopt;
}

// The degrees of a coordinate ddmm.mmm and its hemisphere, the next two fields, where they make
// sense. Minutes are below 60, but for receivers that round up to it.
double readCoordinate(FieldReader& fields, char positive, char negative, double greatest) {
    const double number = readNumber(fields);
    const std::string_view hemisphere = fields.next();
    const char letter = hemisphere.size() == 1 ? hemisphere[0] : '\0';
    const bool fits = number < 100 * (greatest + 1);
    if (!fits || (letter != positive && letter != negative)) {
        return NO_NUMBER;
    }
    const auto whole = static_cast<int>(number / 100);
    const double minutes = number - 100 * whole;
    const double degrees = whole + minutes / 60;
    if (minutes > 60 || degrees > greatest) {
        return NO_NUMBER;
    }
    return letter == negative ? -degrees : degrees;
}

// Takes the position that the next four fields hold, where they make sense.
void readPosition(FieldReader& fields, Fix& fix) {
    const double latitude = readCoordinate(fields, 'N', 'S', MAX_LATITUDE);
    const double longitude = readCoordinate(fields, 'E', 'W', MAX_LONGITUDE);
    if (!std::isnan(latitude) && !std::isnan(longitude)) {
        fix.latitude = latitude;
        fix.longitude = longitude;
    }
}

std::optional<unsigned> readCount(std::string_view text) {
    unsigned count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const bool isCount =
        error == std::errc() && end == text.data() + text.size() && count <= MAX_COUNT;
    return isCount ? std::optional(count) : std::nullopt;
}

// The altitude and its unit, the next two fields.
std::optional<double> readAltitude(FieldReader& fields) {
    const bool isNegative = fields.read('-');
    if (!isNegative) {
        fields.read('+');
    }
    const double height = readNumber(fields);
    const std::string_view unit = fields.next();
    const bool fits = height <= MAX_ALTITUDE && (unit.empty() || unit == "M");
    return fits ? std::optional(isNegative ? -height : height) : std::nullopt;
}

// The fields behind the address of a sentence whose code is known.
FieldReader fieldsBehindCode(std::string_view sentence) {
    FieldReader fields(sentence.substr(GPSTraceMessage::NMEA_CODE_SIZE));
    fields.next();  // what is left of the address
    return fields;
}

void readRmc(std::string_view sentence, Fix& fix) {
    FieldReader fields = fieldsBehindCode(sentence);
    fix.time = fields.next();
    const bool isActive = fields.next().starts_with('A');
    readPosition(fields, fix);
    fix.valid = isActive && fix.latitude.has_value();
    fix.speed = readUpTo(MAX_SPEED, fields, KMH_PER_KNOT);
    fix.course = readUpTo(MAX_COURSE, fields);
}

void readGga(std::string_view sentence, Fix& fix) {
    FieldReader fields = fieldsBehindCode(sentence);
    if (fix.usesRmc) {
        fields.skip(5);  // time and position are those of RMC
    } else {
        fix.time = fields.next();
        readPosition(fields, fix);
    }
    fix.quality = readCount(fields.next());
    if (!fix.usesRmc) {
        fix.valid = fix.quality.value_or(0) != 0 && fix.latitude.has_value();
    }
    fix.satellites = readCount(fields.next());
    fix.hdop = readUpTo(MAX_HDOP, fields);
    fix.altitude = readAltitude(fields);
}

// The verdict on a sentence; nothing where there is none.
std::optional<Checksum> judge(std::string_view sentence, timeStamp_t stamp, TalkerMemory& talkers) {
    return sentence.empty() ? std::nullopt : std::optional(talkers.judge(sentence, stamp).checksum);
}

bool isUsed(std::optional<Checksum> checksum, FixSource source) {
    return checksum && (source == FixSource::ALL || checksum != Checksum::WRONG);
}

std::optional<Fix> readFix(const GpsView& message, FixSource source, TalkerMemory& talkers) {
    const std::string_view rmc = message.getSentence(GPSTraceMessage::GPRMC);
    const std::string_view gga = message.getSentence(GPSTraceMessage::GPGGA);
    std::optional<Fix> result;
    if (rmc.empty() && gga.empty()) {
        return result;
    }
    Fix& fix = result.emplace();
    fix.stamp = message.getTimeStamp();
    fix.rmcChecksum = judge(rmc, fix.stamp, talkers);
    fix.ggaChecksum = judge(gga, fix.stamp, talkers);
    fix.usesRmc = isUsed(fix.rmcChecksum, source);
    fix.usesGga = isUsed(fix.ggaChecksum, source);
    if (fix.usesRmc) {
        readRmc(rmc, fix);
    }
    if (fix.usesGga) {
        readGga(gga, fix);
    }
    return result;
}

}  // namespace

Checksum Fix::checksum() const {
    const Checksum rmc = usesRmc ? *rmcChecksum : Checksum::RIGHT;
    const Checksum gga = usesGga ? *ggaChecksum : Checksum::RIGHT;
    if (rmc == Checksum::WRONG || gga == Checksum::WRONG || !(usesRmc || usesGga)) {
        return Checksum::WRONG;
    }
    return rmc == gga ? rmc : Checksum::NONE;
}

std::optional<Fix> fixOf(const GpsView& message, FixSource source) {
    TalkerMemory talkers;
    return readFix(message, source, talkers);
}

std::optional<Fix> FixReader::read(const GpsView& message) {
    std::optional<Fix> fix = readFix(message, source, talkers);
    if (fix) {
        fix->repeats = repeatsLast(*fix);
        if (!fix->repeats && (fix->usesRmc || fix->usesGga)) {
            last = fix;
        }
    }
    return fix;
}

void FixReader::endTrace() {
    talkers.endTrace();
    last.reset();
}

// Clocks of loggers may be so coarse that stamps alone say little.
bool FixReader::repeatsLast(const Fix& fix) const {
    if (!last || last->stamp != fix.stamp) {
        return false;
    }
    const bool isBetter = (fix.valid && !last->valid) || (last->isDoubtful() && !fix.isDoubtful());
    const bool bringsNothing = (last->usesRmc || !fix.usesRmc) && (last->usesGga || !fix.usesGga);
    const std::optional<TimeOfDay> time = TimeOfDay::parse(fix.time);
    return bringsNothing && !isBetter && time && time == TimeOfDay::parse(last->time);
}

}  // namespace vextrace
