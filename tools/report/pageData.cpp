#include "tools/report/pageData.h"

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>
#include <optional>
#include <utility>

#include "tools/report/markup.h"
#include "tools/report/squeeze.h"

namespace vextrace::tools {

namespace {

using nlohmann::json;
using Drawn = Series::Drawn;

// Scripts hold larger numbers with loss, and read them from texts without.
constexpr uint64_t LARGEST_NUMBER = uint64_t{1} << 53;

json wholeNumber(uint64_t number) {
    return number <= LARGEST_NUMBER ? json(number) : json(std::to_string(number));
}

// The value with as many decimals as are shown; null where there is none.
template <class Number>
json shown(const std::optional<Number>& value, double precision = 1) {
    return value ? json(std::round(*value * precision) / precision) : json();
}

json shown(const std::optional<unsigned>& value) {
    return value ? json(*value) : json();
}

template <class Value>
json column(const std::vector<Drawn>& drawn, Value value) {
    json result = json::array();
    for (const Drawn& point : drawn) {
        result.push_back(value(*point.moment));
    }
    return result;
}

// Time stamps: the first, and how far each is from the one before, in the largest unit that fits.
void addTimes(const std::vector<Drawn>& drawn, json& data) {
    std::vector<timeStamp_t> steps;
    timeStamp_t before = drawn.empty() ? 0 : drawn.front().moment->fix.stamp;
    data["first"] = std::to_string(before);
    timeStamp_t unit = 0;
    for (const Drawn& point : drawn) {
        steps.push_back(point.moment->fix.stamp - before);
        unit = std::gcd(unit, steps.back());
        before = point.moment->fix.stamp;
    }
    unit = std::max<timeStamp_t>(unit, 1);
    data["unit"] = std::to_string(unit);
    data["steps"] = json::array();
    for (const timeStamp_t step : steps) {
        data["steps"].push_back(wholeNumber(step / unit));
    }
}

void addPlaces(const std::vector<Drawn>& drawn, const TrackPicture& picture, json& data) {
    std::vector<int> x;
    std::vector<int> y;
    for (const Drawn& point : drawn) {
        const Moment& moment = *point.moment;
        const auto spot = moment.fix.valid ? picture.spot(*moment.fix.latitude, moment.eastward)
                                           : TrackPicture::Spot{0, 0};
        x.push_back(spot.x);
        y.push_back(spot.y);
    }
    data["x"] = x;
    data["y"] = y;
    data["metresPerUnit"] = picture.metresPerUnit();
}

// The names of those that a moment is from, and which one each is from.
void addTraces(const std::vector<Drawn>& drawn, const std::vector<std::string>& traces,
               json& data) {
    std::map<size_t, size_t> used;
    data["traces"] = json::array();
    data["trace"] = column(drawn, [&](const Moment& moment) {
        const auto [place, isNew] = used.try_emplace(moment.trace, used.size());
        if (isNew) {
            data["traces"].push_back(traces[moment.trace]);
        }
        return place->second;
    });
    if (used.size() < 2) {
        data.erase("trace");
    }
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

void addTexts(const std::vector<Drawn>& drawn, json& data) {
    std::string texts;
    for (const Drawn& point : drawn) {
        const Moment::Texts shown = point.moment->texts();
        texts += shown.position + '\n' + shown.traceLine + '\n';
    }
    data["texts"] = asCharacters(squeezed(texts));
    data["textLength"] = texts.size();
    data["digits"] = Squeezing::DIGITS;
    data["shortest"] = Squeezing::SHORTEST;
}

}  // namespace

std::string pageData(const std::vector<Drawn>& drawn, const TrackPicture* picture,
                     const std::vector<std::string>& traces) {
    constexpr double HUNDREDTHS = 100;
    constexpr double THOUSANDTHS = 1000;
    json data;
    addTimes(drawn, data);
    if (picture != nullptr) {
        addPlaces(drawn, *picture, data);
    }
    data["valid"] = column(drawn, [](const Moment& m) { return m.fix.valid ? 1 : 0; });
    data["speed"] = column(drawn, [](const Moment& m) { return shown(m.fix.speed, HUNDREDTHS); });
    data["course"] = column(drawn, [](const Moment& m) { return shown(m.fix.course, HUNDREDTHS); });
    data["altitude"] =
        column(drawn, [](const Moment& m) { return shown(m.fix.altitude, THOUSANDTHS); });
    data["satellites"] = column(drawn, [](const Moment& m) { return shown(m.fix.satellites); });
    data["quality"] = column(drawn, [](const Moment& m) { return shown(m.fix.quality); });
    data["hdop"] = column(drawn, [](const Moment& m) { return shown(m.fix.hdop, HUNDREDTHS); });
    data["message"] = column(drawn, [](const Moment& m) { return m.number; });
    addTraces(drawn, traces, data);
    data["breaks"] = json::array();
    for (size_t i = 0; i < drawn.size(); ++i) {
        if (drawn[i].breaks != 0) {
            data["breaks"].push_back({i, drawn[i].breaks});
        }
    }
    addTexts(drawn, data);
    return jsonInPage(data);
}

}  // namespace vextrace::tools
