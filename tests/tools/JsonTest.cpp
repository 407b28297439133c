#include "tools/io/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

using namespace vextrace;
using namespace vextrace::tools;

TEST(JsonTest, WritesValuesOfEachKind) {
    EXPECT_EQ(Json().text(), "null");
    EXPECT_EQ(Json(true).text(), "true");
    EXPECT_EQ(Json(-7).text(), "-7");
    EXPECT_EQ(Json(std::numeric_limits<uint64_t>::max()).text(), "18446744073709551615");
    EXPECT_EQ(Json("a b").text(), "\"a b\"");
    EXPECT_EQ(Json(std::optional<int>(3)).text(), "3");
    EXPECT_EQ(Json(std::optional<int>()).text(), "null");
}

TEST(JsonTest, NumbersReadBackAsTheyWere) {
    for (const double number : {0.1, 1.0 / 3, 48.1173, -1e-12, 5e-324, 1.7976931348623157e308}) {
        EXPECT_EQ(std::strtod(Json(std::fabs(number)).text().c_str(), nullptr), std::fabs(number));
        EXPECT_EQ(Json(number).text().front() == '-', number < 0);
    }
    EXPECT_EQ(Json(41.48).text(), "41.48");
    EXPECT_EQ(Json(std::nan("")).text(), "null");
    EXPECT_EQ(Json(std::numeric_limits<double>::infinity()).text(), "null");
}

TEST(JsonTest, ArraysAndObjectsHoldValuesInOrder) {
    Json array = Json::array();
    EXPECT_EQ(array.text(), "[]");
    array.add(1);
    array.add("two");
    array.add(Json{{"b", 1}, {"a", Json::object()}});
    EXPECT_EQ(array.text(), R"([1,"two",{"b":1,"a":{}}])");
    EXPECT_EQ(Json(std::vector<int>{3, 2}).text(), "[3,2]");
}

TEST(JsonTest, LeavesNoMarkupInTexts) {
    const Json value = {{"</script>", std::vector<std::string>{"<!--", "]]>", "a&b", "\"\\"}}};
    EXPECT_EQ(value.text(),
              R"({"\u003c/script\u003e":["\u003c!--","]]\u003e","a\u0026b","\u0022\\"]})");
}

TEST(JsonTest, WritesWhatIsNotAsciiAsUtf16) {
    EXPECT_EQ(Json("\xE2\x80\xA8\n\t\x7f\xC2\xB0\xF0\x9F\x98\x80").text(),
              R"("\u2028\n\u0009\u007f\u00b0\ud83d\ude00")");
}

TEST(JsonTest, ReplacesWhatIsNoUtf8) {
    EXPECT_EQ(Json("a\xff").text(), R"("a\ufffd")");
    EXPECT_EQ(Json("\xC2").text(), R"("\ufffd")");
}

TEST(JsonTest, LinesAreIndentedByDepthAndTextsLeftAlone) {
    const Json value = {{"a", std::vector<int>{1, 2}}, {"b", Json::array()}, {"c", "[{,:\"\\"}};
    EXPECT_EQ(value.lines(),
              "{\n \"a\": [\n  1,\n  2\n ],\n \"b\": [],\n \"c\": \"[{,:\\u0022\\\\\"\n}");
}
