#include "tools/report/pageData.h"

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/report/squeeze.h"

using namespace vextrace;
using namespace vextrace::tools;
using nlohmann::json;

namespace {

MomentPtr momentAt(timeStamp_t stamp, const std::string& sentence, uint64_t number, size_t trace) {
    auto message = std::make_unique<GPSTraceMessage>(stamp, sentence);
    const Fix fix = fixOf(*message).value();
    auto moment = std::make_shared<Moment>(fix, std::move(message), number, trace);
    moment->eastward = fix.longitude.value_or(0);
    moment->settle();
    return moment;
}

const std::string RMC = "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*4C";
const std::string GGA = "$GPGGA,123519,,,,,0,08,0.94,-12.3456,M,46.9,M,,*47";

}  // namespace

TEST(PageDataTest, HasAnArrayPerValue) {
    const auto first = momentAt(5000000000, RMC, 17, 0);
    const auto second = momentAt(5300000000, GGA, 18, 1);
    const std::vector<TrackPoint> track = {{48.1173, 11.516666666, 41.4848, false}};
    const TrackPicture picture(track);
    const json data = json::parse(
        pageData({{first.get(), 0}, {second.get(), 0b100110}}, &picture, {"a.trace", "b.trace"}));
    EXPECT_EQ(data["first"], "5000000000");
    EXPECT_EQ(data["unit"], "300000000");
    EXPECT_EQ(data["steps"], (json{0, 1}));
    EXPECT_EQ(data["valid"], (json{1, 0}));
    EXPECT_EQ(data["x"], (json{5000, 0}));
    EXPECT_EQ(data["y"], (json{3500, 0}));
    EXPECT_NEAR(data["metresPerUnit"].get<double>(), 20.0 / 5600, 0.001);
    EXPECT_EQ(data["speed"], (json{41.48, nullptr}));
    EXPECT_EQ(data["course"], (json{84.4, nullptr}));
    EXPECT_EQ(data["altitude"], (json{nullptr, -12.346}));
    EXPECT_EQ(data["satellites"], (json{nullptr, 8}));
    EXPECT_EQ(data["quality"], (json{nullptr, 0}));
    EXPECT_EQ(data["hdop"], (json{nullptr, 0.94}));
    EXPECT_EQ(data["message"], (json{17, 18}));
    EXPECT_EQ(data["trace"], (json{0, 1}));
    EXPECT_EQ(data["traces"], (json{"a.trace", "b.trace"}));
    EXPECT_EQ(data["breaks"], json::parse("[[1, 38]]"));
    EXPECT_EQ(data["digits"], Squeezing::DIGITS);
}

TEST(PageDataTest, HasTheTextsInBytes) {
    const auto moment = momentAt(0, RMC, 1, 0);
    const json data = json::parse(pageData({{moment.get(), 0}}, nullptr, {"a.trace"}));
    // The degree sign is two bytes, each a character here.
    const std::string texts =
        "48\u00c2\u00b07.038 N, 11\u00c2\u00b031.000 E\n"
        "0000000000000000 00000000  GPS         | " +
        RMC + "\n";
    const std::string squeezedTexts = data["texts"];
    EXPECT_EQ(squeezedTexts.substr(0, 30), texts.substr(0, 30));
    EXPECT_EQ(data["textLength"], texts.size() - 4);
    EXPECT_FALSE(data.contains("x"));
    EXPECT_FALSE(data.contains("trace"));
}

TEST(PageDataTest, NamesTheTracesThatItShows) {
    const auto first = momentAt(1, GGA, 1, 7);
    const auto second = momentAt(2, GGA, 2, 3);
    std::vector<std::string> names(10, "other");
    names[7] = "seven";
    names[3] = "three";
    const json data = json::parse(
        pageData({{first.get(), 0}, {second.get(), 0}, {first.get(), 0}}, nullptr, names));
    EXPECT_EQ(data["traces"], (json{"seven", "three"}));
    EXPECT_EQ(data["trace"], (json{0, 1, 0}));
}

TEST(PageDataTest, KeepsEveryNanosecond) {
    const auto first = momentAt(1, GGA, 1, 0);
    const auto second = momentAt(9007199254740994, GGA, 2, 0);
    const auto third = momentAt(18446744073709551615U, GGA, 3, 0);
    const json data = json::parse(
        pageData({{first.get(), 0}, {second.get(), 0}, {third.get(), 0}}, nullptr, {"a"}));
    EXPECT_EQ(data["first"], "1");
    EXPECT_EQ(data["unit"], "1");
    EXPECT_EQ(data["steps"], (json{0, "9007199254740993", "18437736874454810621"}));
}

TEST(PageDataTest, IsEmptyWithoutFixes) {
    const json data = json::parse(pageData({}, nullptr, {"a"}));
    EXPECT_EQ(data["steps"], json::array());
    EXPECT_EQ(data["texts"], "");
}

TEST(PageDataTest, LeavesNoMarkup) {
    const auto moment = momentAt(0, "$GPRMC,</script><!--\xff\u2028&\"'", 1, 0);
    const std::string data = pageData({{moment.get(), 0}}, nullptr, {"</script>"});
    EXPECT_EQ(data.find_first_of("<>&"), std::string::npos);
    for (const char c : data) {
        EXPECT_TRUE(c >= ' ' && c <= '~') << static_cast<int>(c);
    }
}
