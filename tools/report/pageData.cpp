#include "tools/report/pageData.h"

#include <cmath>
#include <map>
#include <numeric>
#include <optional>
#include <utility>

#include "tools/io/json.h"
#include "tools/report/squeeze.h"

namespace vextrace::tools {

namespace {

using Drawn = Series::Drawn;

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
Json column(const std::vector<Drawn>& drawn, Value value) {
    Json result = Json::array();
    for (const Drawn& point : drawn) {
        result.add(value(*point.moment));
    }
    return result;
}

// Time stamps: the first, and how far each is from the one before, in the largest unit that fits.
void addTimes(const std::vector<Drawn>& drawn, Json& data) {
    std::vector<timeStamp_t> steps;
    timeStamp_t before = drawn.empty() ? 0 : drawn.front().moment->fix.stamp;
    data.add("first", std::to_string(before));
    timeStamp_t unit = 0;
    for (const Drawn& point : drawn) {
        steps.push_back(point.moment->fix.stamp - before);
        unit = std::gcd(unit, steps.back());
        before = point.moment->fix.stamp;
    }
    unit = std::max<timeStamp_t>(unit, 1);
    data.add("unit", std::to_string(unit));
    Json inUnits = Json::array();
    for (const timeStamp_t step : steps) {
        inUnits.add(wholeNumber(step / unit));
    }
    data.add("steps", inUnits);
}

void addPlaces(const std::vector<Drawn>& drawn, const TrackPicture& picture, Json& data) {
    std::vector<int> x;
    std::vector<int> y;
    for (const Drawn& point : drawn) {
        const Moment& moment = *point.moment;
        const auto spot = moment.fix.valid ? picture.spot(*moment.fix.latitude, moment.eastward)
                                           : TrackPicture::Spot{0, 0};
        x.push_back(spot.x);
        y.push_back(spot.y);
    }
    data.add("x", x);
    data.add("y", y);
    data.add("metresPerUnit", picture.metresPerUnit());
}

// The names of those that a moment is from, and which one each is from.
void addTraces(const std::vector<Drawn>& drawn, const std::vector<std::string>& traces,
               Json& data) {
    std::map<size_t, size_t> used;
    Json names = Json::array();
    const Json trace = column(drawn, [&](const Moment& moment) {
        const auto [place, isNew] = used.try_emplace(moment.trace, used.size());
        if (isNew) {
            names.add(traces[moment.trace]);
        }
        return place->second;
    });
    data.add("traces", names);
    if (used.size() > 1) {
        data.add("trace", trace);
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

void addTexts(const std::vector<Drawn>& drawn, Json& data) {
    std::string texts;
    for (const Drawn& point : drawn) {
        const Moment::Texts shown = point.moment->texts();
        texts += shown.position + '\n' + shown.traceLine + '\n';
    }
    data.add("texts", asCharacters(squeezed(texts)));
    data.add("textLength", texts.size());
    data.add("digits", Squeezing::DIGITS);
    data.add("shortest", Squeezing::SHORTEST);
}

}  // namespace

std::string pageData(const std::vector<Drawn>& drawn, const TrackPicture* picture,
                     const std::vector<std::string>& traces) {
    constexpr double HUNDREDTHS = 100;
    constexpr double THOUSANDTHS = 1000;
    Json data = Json::object();
    addTimes(drawn, data);
    if (picture != nullptr) {
        addPlaces(drawn, *picture, data);
    }
    data.add("valid", column(drawn, [](const Moment& m) { return m.fix.valid ? 1 : 0; }));
    data.add("speed",
             column(drawn, [](const Moment& m) { return shown(m.fix.speed, HUNDREDTHS); }));
    data.add("course",
             column(drawn, [](const Moment& m) { return shown(m.fix.course, HUNDREDTHS); }));
    data.add("altitude",
             column(drawn, [](const Moment& m) { return shown(m.fix.altitude, THOUSANDTHS); }));
    data.add("satellites", column(drawn, [](const Moment& m) { return shown(m.fix.satellites); }));
    data.add("quality", column(drawn, [](const Moment& m) { return shown(m.fix.quality); }));
    data.add("hdop", column(drawn, [](const Moment& m) { return shown(m.fix.hdop, HUNDREDTHS); }));
    data.add("message", column(drawn, [](const Moment& m) { return m.number; }));
    addTraces(drawn, traces, data);
    Json breaks = Json::array();
    for (size_t i = 0; i < drawn.size(); ++i) {
        if (drawn[i].breaks != 0) {
            breaks.add(std::vector<uint64_t>{i, drawn[i].breaks});
        }
    }
    data.add("breaks", breaks);
    addTexts(drawn, data);
    return data.text();
}

}  // namespace vextrace::tools
