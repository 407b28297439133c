#include "tools/report/pageData.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "drawnDrives.h"
#include "tools/report/squeeze.h"

using namespace vextrace;
using namespace vextrace::tools;
using nlohmann::json;

namespace pageDataTest {
namespace {

Moment momentAt(timeStamp_t stamp, const std::string& sentence, uint64_t number) {
    const GPSTraceMessage message(stamp, sentence);
    Moment moment;
    moment.fix = fixOf(message).value();
    moment.number = number;
    moment.texts = textsOf(serialise(message), moment.fix);
    return moment;
}

DrawnDrive driveOf(const std::vector<Moment>& moments) {
    DrawnDrive drive = drawn({{}})[0];
    drive.moments = moments;
    return drive;
}

json dataOf(const std::vector<Moment>& moments) {
    return json::parse(pageData({driveOf(moments)}, {"a.trace"}, {1}, {0}));
}

const std::string RMC = "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*7C";
const std::string GGA = "$GPGGA,123519,,,,,0,08,0.94,-12.3456,M,46.9,M,,*61";

}  // namespace

TEST(PageDataTest, HasAnArrayPerValue) {
    Moment first = momentAt(5000000000, RMC, 17);
    first.x = 17.4;
    first.y = 2000.6;
    Moment second = momentAt(5300000000, GGA, 18);
    second.way = 12.345;
    second.breaks = 0b100110;
    const json data = dataOf({first, second});
    EXPECT_EQ(data["unit"], "300000000");
    EXPECT_EQ(data["steps"], (json{0, 1}));
    EXPECT_EQ(data["valid"], (json{1, 0}));
    EXPECT_EQ(data["x"], (json{17, 0}));
    EXPECT_EQ(data["y"], (json{2001, 0}));
    EXPECT_EQ(data["way"], (json{0.0, 12.3}));
    EXPECT_EQ(data["speed"], (json{41.48, nullptr}));
    EXPECT_EQ(data["course"], (json{84.4, nullptr}));
    EXPECT_EQ(data["altitude"], (json{nullptr, -12.346}));
    EXPECT_EQ(data["satellites"], (json{nullptr, 8}));
    EXPECT_EQ(data["quality"], (json{nullptr, 0}));
    EXPECT_EQ(data["hdop"], (json{nullptr, 0.94}));
    EXPECT_EQ(data["message"], (json{17, 18}));
    EXPECT_EQ(data["breaks"], json::parse("[[1, 38]]"));
    EXPECT_EQ(data["digits"], Squeezing::DIGITS);
}

TEST(PageDataTest, HasTheTextsInBytes) {
    const json data = dataOf({momentAt(0, RMC, 1)});
    // The degree sign is two bytes, each a character here.
    const std::string texts =
        "48\u00c2\u00b07.038 N, 11\u00c2\u00b031.000 E\n"
        "0000000000000000 00000000  GPS         | " +
        RMC + "\n";
    const std::string squeezedTexts = data["texts"];
    EXPECT_EQ(squeezedTexts.substr(0, 30), texts.substr(0, 30));
    EXPECT_EQ(data["textLength"], texts.size() - 4);
}

TEST(PageDataTest, HasDriveBehindDrive) {
    const std::vector<DrawnDrive> drives = {driveOf({momentAt(70, GGA, 1), momentAt(90, GGA, 2)}),
                                            driveOf({}), driveOf({momentAt(30, GGA, 5)}),
                                            drawn({{placeAt(0, 90), placeAt(0, 91)}})[0]};
    const json data =
        json::parse(pageData(drives, {"a", "b", "c", "d"}, {7, 0, 1, 2}, {0, 0, 0, 1}));
    EXPECT_EQ(data["drives"][0],
              (json{{"name", "a"}, {"count", 2}, {"fixes", 7}, {"first", "70"}, {"group", 0}}));
    EXPECT_EQ(data["drives"][1],
              (json{{"name", "b"}, {"count", 0}, {"fixes", 0}, {"first", "0"}, {"group", 0}}));
    EXPECT_EQ(data["drives"][2],
              (json{{"name", "c"}, {"count", 1}, {"fixes", 1}, {"first", "30"}, {"group", 0}}));
    EXPECT_EQ(data["drives"][3]["group"], 1);
    EXPECT_NEAR(data["drives"][3]["area"][0].get<double>(), 1.570796, 1e-6);
    EXPECT_NEAR(data["drives"][3]["area"][2].get<double>(), 0.0174533, 1e-6);
    EXPECT_NEAR(data["drives"][3]["scale"].get<double>(), 0.0174533 / 10000, 1e-9);
    EXPECT_EQ(data["steps"], (json{0, 1, 0, 0, 0}));
    EXPECT_EQ(data["unit"], "20");
    EXPECT_EQ(data["message"], (json{1, 2, 5, 1, 2}));
}

TEST(PageDataTest, KeepsEveryNanosecond) {
    const json data = dataOf({momentAt(1, GGA, 1), momentAt(9007199254740994, GGA, 2),
                              momentAt(18446744073709551615U, GGA, 3)});
    EXPECT_EQ(data["drives"][0]["first"], "1");
    EXPECT_EQ(data["unit"], "1");
    EXPECT_EQ(data["steps"], (json{0, "9007199254740993", "18437736874454810621"}));
}

TEST(PageDataTest, IsEmptyWithoutFixes) {
    const json data = dataOf({});
    EXPECT_EQ(data["steps"], json::array());
    EXPECT_EQ(data["texts"], "");
}

TEST(PageDataTest, LeavesNoMarkup) {
    const Moment moment = momentAt(0, "$GPRMC,</script><!--\xff\u2028&\"'", 1);
    const std::string data = pageData({driveOf({moment})}, {"</script>"}, {1}, {0});
    EXPECT_EQ(data.find_first_of("<>&"), std::string::npos);
    for (const char c : data) {
        EXPECT_TRUE(c >= ' ' && c <= '~') << static_cast<int>(c);
    }
}

}  // namespace pageDataTest
