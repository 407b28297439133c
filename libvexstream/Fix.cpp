#include "libvexstream/Fix.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>

#include "libvexstream/internal/digits.h"
#include "libvextrace/nmeaNumbers.h"

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

// Gives the fields of a sentence one after the other, the address first; empty ones behind the
// last. Fields are so short that loops outrun std::find.
class FieldReader {
public:
    explicit FieldReader(std::string_view sentence)
        : place(sentence.data()),
          end(place + std::min(sentence.find('*'), withoutLineEnd(sentence).size())) {}

    std::string_view next() {
        const char* const begin = place;
        while (place != end && *place != ',') {
            ++place;
        }
        const std::string_view field(begin, static_cast<size_t>(place - begin));
        place += place != end ? 1 : 0;
        return field;
    }

    void skip(size_t count) {
        for (; count > 0; --count) {
            next();
        }
    }

private:
    const char* place;
    const char* end;
};

// Minutes are below 60, but for receivers that round up to it.
bool hasMinutes(std::string_view coordinate) {
    size_t point = 0;
    while (point < coordinate.size() && coordinate[point] != '.') {
        ++point;
    }
    const std::string_view minutes = coordinate.substr(point < 2 ? 0 : point - 2);
    return point < 2 || minutes[0] < '6' ||
           (minutes[0] == '6' && minutes.find_first_not_of("0.", 1) == std::string_view::npos);
}

// Whether a coordinate and its hemisphere, the next two fields, make sense.
bool readCoordinate(FieldReader& fields, char positive, char negative) {
    const std::string_view text = fields.next();
    const std::string_view hemisphere = fields.next();
    return isUnsignedNumber(text) && hasMinutes(text) && hemisphere.size() == 1 &&
           (hemisphere[0] == positive || hemisphere[0] == negative);
}

// Takes the position that the next four fields hold, where they make sense.
void readPosition(FieldReader& fields, double latitude, double longitude, Fix& fix) {
    const bool hasLatitude =
        readCoordinate(fields, 'N', 'S') && std::fabs(latitude) <= MAX_LATITUDE;
    const bool hasLongitude =
        readCoordinate(fields, 'E', 'W') && std::fabs(longitude) <= MAX_LONGITUDE;
    if (hasLatitude && hasLongitude) {
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

// Of a number of the receiver's.
std::optional<double> toDouble(std::string_view text) {
    text.remove_prefix(text.front() == '+' ? 1 : 0);
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
    return fits ? std::optional(value) : std::nullopt;
}

std::optional<double> readHdop(std::string_view text) {
    const std::optional<double> hdop = isUnsignedNumber(text) ? toDouble(text) : std::nullopt;
    return hdop <= MAX_HDOP ? hdop : std::nullopt;
}

// The altitude and its unit, the next two fields.
std::optional<double> readAltitude(FieldReader& fields) {
    const std::string_view text = fields.next();
    const std::string_view unit = fields.next();
    if (!isNumber(text) || (!unit.empty() && unit != "M")) {
        return std::nullopt;
    }
    const std::optional<double> altitude = toDouble(text);
    return altitude && std::fabs(*altitude) <= MAX_ALTITUDE ? altitude : std::nullopt;
}

void readRmc(std::string_view sentence, Fix& fix) {
    GPSTraceMessage::numeric_gprmc_t numbers;
    readNumbers(sentence, numbers);
    FieldReader fields(sentence);
    fields.skip(1);  // address
    fix.time = fields.next();
    fields.skip(1);  // status
    readPosition(fields, numbers.latitude, numbers.longitude, fix);
    fix.valid = numbers.status && fix.latitude.has_value();
    if (isUnsignedNumber(fields.next()) && numbers.speed <= MAX_SPEED) {
        fix.speed = numbers.speed;
    }
    if (isUnsignedNumber(fields.next()) && numbers.course <= MAX_COURSE) {
        fix.course = numbers.course;
    }
}

// Where the fix is not made of RMC.
void readGgaPosition(std::string_view sentence, FieldReader& fields, Fix& fix) {
    GPSTraceMessage::numeric_gpgga_t numbers;
    readNumbers(sentence, numbers);
    readPosition(fields, numbers.latitude, numbers.longitude, fix);
}

void readGga(std::string_view sentence, Fix& fix) {
    FieldReader fields(sentence);
    fields.skip(1);  // address
    if (fix.usesRmc) {
        fields.skip(5);  // time and position are those of RMC
    } else {
        fix.time = fields.next();
        readGgaPosition(sentence, fields, fix);
    }
    fix.quality = readCount(fields.next());
    if (!fix.usesRmc) {
        fix.valid = fix.quality.value_or(0) != 0 && fix.latitude.has_value();
    }
    fix.satellites = readCount(fields.next());
    fix.hdop = readHdop(fields.next());
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
    if (rmc.empty() && gga.empty()) {
        return std::nullopt;
    }
    Fix fix;
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
    return fix;
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
