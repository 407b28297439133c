#include "tools/report/pageData.h"

#include <cmath>
#include <numeric>
#include <optional>

#include "tools/io/json.h"
#include "tools/report/squeeze.h"

namespace vextrace::tools {

namespace {

using Moments = std::vector<const Moment*>;

// Scripts hold larger numbers with loss, and read them from texts without.
constexpr uint64_t LARGEST_NUMBER = uint64_t{1} << 53;

Json wholeNumber(uint64_t number) {
    return number <= LARGEST_NUMBER ? Json(number) : Json(std::to_string(number));
}

// The value with as many decimals as are shown; null where there is none.
template <class Number>
Json shown(const std::optional<Number>& value, double precision = 1) {
    return value ? Json(std::round(*value * precision) / precision) : Json();
}

Json shown(const std::optional<unsigned>& value) {
    return value ? Json(*value) : Json();
}

template <class Value>
Json column(const Moments& moments, Value value) {
    Json result = Json::array();
    for (const Moment* moment : moments) {
        result.add(value(*moment));
    }
    return result;
}

// Time stamps: how far each is from the one before in its drive, in the largest unit that fits. The
// first of a drive stands with the drive.
void addTimes(const std::vector<DrawnDrive>& drives, Json& data) {
    std::vector<timeStamp_t> steps;
    timeStamp_t unit = 0;
    for (const DrawnDrive& drive : drives) {
        timeStamp_t before = drive.moments.empty() ? 0 : drive.moments.front().fix.stamp;
        for (const Moment& moment : drive.moments) {
            steps.push_back(moment.fix.stamp - before);
            unit = std::gcd(unit, steps.back());
            before = moment.fix.stamp;
        }
    }
    unit = std::max<timeStamp_t>(unit, 1);
    data.add("unit", std::to_string(unit));
    Json inUnits = Json::array();
    for (const timeStamp_t step : steps) {
        inUnits.add(wholeNumber(step / unit));
    }
    data.add("steps", inUnits);
}

Json driveData(const DrawnDrive& drive, const std::string& name, uint64_t fixes, size_t group) {
    const timeStamp_t first = drive.moments.empty() ? 0 : drive.moments.front().fix.stamp;
    Json data = {{"name", name},
                 {"count", drive.moments.size()},
                 {"fixes", fixes},
                 {"group", group},
                 {"first", std::to_string(first)}};
    if (drive.frame) {
        const Area& area = drive.frame->area();
        data.add("area", std::vector<double>{area.left, area.top, area.width, area.height});
        data.add("scale", drive.frame->unit());
    }
    return data;
}

// Each byte as the character of its number: in JSON there are no bytes.
std::string asCharacters(const std::string& bytes) {
    std::string result;
    result.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | byte >> 6);
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

void addTexts(const Moments& moments, size_t longestLine, Json& data) {
    std::string texts;
    for (const Moment* moment : moments) {
        texts += moment->texts.position + '\n' + moment->texts.shownLine(longestLine) + '\n';
    }
    data.add("texts", asCharacters(squeezed(texts)));
    data.add("textLength", texts.size());
    data.add("digits", Squeezing::DIGITS);
    data.add("shortest", Squeezing::SHORTEST);
}

}  // namespace

std::string pageData(const std::vector<DrawnDrive>& drives, const std::vector<std::string>& names,
                     const std::vector<uint64_t>& fixes, const std::vector<size_t>& groups,
                     size_t longestLine) {
    constexpr double TENTHS = 10;
    constexpr double HUNDREDTHS = 100;
    constexpr double THOUSANDTHS = 1000;
    Json listed = Json::array();
    Moments all;
    for (size_t i = 0; i < drives.size(); ++i) {
        listed.add(driveData(drives[i], names[i], fixes[i], groups[i]));
        for (const Moment& moment : drives[i].moments) {
            all.push_back(&moment);
        }
    }
    Json data = {{"drives", listed}};
    addTimes(drives, data);
    const auto add = [&](const char* name, auto value) { data.add(name, column(all, value)); };
    add("x", [](const Moment& m) { return std::lround(m.x); });
    add("y", [](const Moment& m) { return std::lround(m.y); });
    add("way", [](const Moment& m) { return shown(std::optional(m.way), TENTHS); });
    add("valid", [](const Moment& m) { return m.fix.valid ? 1 : 0; });
    add("speed", [](const Moment& m) { return shown(m.fix.speed, HUNDREDTHS); });
    add("course", [](const Moment& m) { return shown(m.fix.course, HUNDREDTHS); });
    add("altitude", [](const Moment& m) { return shown(m.fix.altitude, THOUSANDTHS); });
    add("satellites", [](const Moment& m) { return shown(m.fix.satellites); });
    add("quality", [](const Moment& m) { return shown(m.fix.quality); });
    add("hdop", [](const Moment& m) { return shown(m.fix.hdop, HUNDREDTHS); });
    add("message", [](const Moment& m) { return m.number; });
    Json breaks = Json::array();
    for (size_t i = 0; i < all.size(); ++i) {
        if (all[i]->breaks != 0) {
            breaks.add(std::vector<uint64_t>{i, all[i]->breaks});
        }
    }
    data.add("breaks", breaks);
    addTexts(all, longestLine, data);
    return data.text();
}

}  // namespace vextrace::tools
