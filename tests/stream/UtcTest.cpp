#include "libvexstream/utc.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace std::string_view_literals;
using namespace vextrace;

namespace utcTest {
namespace {

constexpr timeStamp_t SECOND = 1'000'000'000;

timeStamp_t stampOfText(std::string_view text) {
    return parseUtc(text).value_or(UINT64_MAX);
}

}  // namespace

TEST(UtcTest, WritesTheEnds) {
    EXPECT_EQ(utcText(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(utcText(1), "1970-01-01T00:00:00.000000001Z");
    EXPECT_EQ(utcText(UINT64_MAX), "2554-07-21T23:34:33.709551615Z");
}

TEST(UtcTest, WritesAsManyDigitsAsThereAre) {
    EXPECT_EQ(utcText(764426119 * SECOND), "1994-03-23T12:35:19Z");
    EXPECT_EQ(utcText(764426119 * SECOND + 500'000'000), "1994-03-23T12:35:19.5Z");
    EXPECT_EQ(utcText(764426119 * SECOND + 50'000'000), "1994-03-23T12:35:19.05Z");
    EXPECT_EQ(utcText(764426119 * SECOND + 123'456'789), "1994-03-23T12:35:19.123456789Z");
    EXPECT_EQ(utcText(764426119 * SECOND + 100), "1994-03-23T12:35:19.0000001Z");
}

TEST(UtcTest, ReadsWhatItWrites) {
    // The numbers of seconds are those that date(1) gives.
    const std::pair<const char*, timeStamp_t> days[] = {
        {"1970-01-01", 0},          {"1972-02-29", 68169600},   {"1999-12-31", 946598400},
        {"2000-02-29", 951782400},  {"2000-03-01", 951868800},  {"2024-12-31", 1735603200},
        {"2079-12-31", 3471206400}, {"2100-02-28", 4107456000}, {"2100-03-01", 4107542400},
        {"2200-01-01", 7258118400}, {"2554-07-20", 18446572800}};
    for (const auto& [day, seconds] : days) {
        EXPECT_EQ(stampOfText(day), seconds * SECOND) << day;
        EXPECT_EQ(utcText(seconds * SECOND), std::string(day) + "T00:00:00Z");
        const std::string noon = std::string(day) + "T12:34:56Z";
        EXPECT_EQ(stampOfText(noon), (seconds + 45296) * SECOND) << noon;
        EXPECT_EQ(utcText(stampOfText(noon)), noon);
    }
}

TEST(UtcTest, ReadsTimesWithAndWithoutFractionAndZ) {
    for (const char* const text : {"1994-03-23T12:35:19Z", "1994-03-23T12:35:19",
                                   "1994-03-23T12:35:19.0", "1994-03-23T12:35:19.000Z"}) {
        EXPECT_EQ(stampOfText(text), 764426119 * SECOND) << text;
    }
    EXPECT_EQ(stampOfText("1994-03-23T12:35:19.25"), 764426119 * SECOND + 250'000'000);
    EXPECT_EQ(stampOfText("1994-03-23T12:35:19.1234567899Z"), 764426119 * SECOND + 123'456'789);
    EXPECT_EQ(stampOfText("1994-03-23T23:59:60Z"), stampOfText("1994-03-24T00:00:00Z"));
}

TEST(UtcTest, ReadsMinutesAloneAndABlankForTheT) {
    for (const char* const text : {"1994-03-23T12:35", "1994-03-23T12:35Z", "1994-03-23 12:35",
                                   "1994-03-23 12:35Z", "1994-03-23 12:35:00"}) {
        EXPECT_EQ(stampOfText(text), 764426100 * SECOND) << text;
    }
}

TEST(UtcTest, RefusesWhatIsNoTime) {
    for (const char* const text : {"",
                                   "1994",
                                   "1994-03",
                                   "1994-3-23",
                                   "1994-03-2",
                                   "94-03-23",
                                   "1994/03/23",
                                   "1994-03-32",
                                   "1994-02-29",
                                   "1994-00-01",
                                   "1994-01-00",
                                   "1969-12-31",
                                   "2554-07-21",
                                   "9999-12-31",
                                   "1994-03-23T",
                                   "1994-03-23T12",
                                   "1994-03-23T12:3",
                                   "1994-03-23T1235",
                                   "1994-03-23T12:35:",
                                   "1994-03-23T24:00",
                                   "1994-03-23T12:60Z",
                                   "1994-03-23T12:35:1",
                                   "1994-03-23T12:35:19.",
                                   "1994-03-23T12:35:19.Z",
                                   "1994-03-23T12:35:19ZZ",
                                   "1994-03-23T12:35:19z",
                                   "1994-03-23t12:35:19",
                                   "1994-03-23  12:35:19",
                                   "1994-03-23_12:35:19",
                                   "1994-03-23T24:00:00",
                                   "1994-03-23T12:60:00",
                                   "1994-03-23T12:35:60",
                                   "1994-03-23T12-35-19",
                                   "1994-03-23T12:35:19+01:00",
                                   "1994-03-23Z",
                                   "x994-03-23",
                                   "1994-x3-23",
                                   "1994-03-x3",
                                   "-994-03-23",
                                   " 1994-03-23",
                                   "1994-03-23 "}) {
        EXPECT_FALSE(parseUtc(text).has_value()) << text;
    }
}

// A blank may stand for the T, and any digit for another that makes a time.
TEST(UtcTest, RefusesOneWrongByteAtEachPlaceOfATime) {
    const std::string right = "2026-11-21T12:35:19.5Z";
    ASSERT_TRUE(parseUtc(right).has_value());
    for (size_t place = 0; place < right.size(); ++place) {
        const bool isDigit = right[place] >= '0' && right[place] <= '9';
        for (const char byte : "x:-/; .,+TZ0\0\xB2"sv) {
            const bool isRight = byte == right[place] || (isDigit && byte == '0') ||
                                 (right[place] == 'T' && byte == ' ') ||
                                 (right[place] == 'Z' && byte == '0');
            std::string text = right;
            text[place] = byte;
            EXPECT_TRUE(isRight || !parseUtc(text).has_value()) << text;
        }
    }
}

TEST(UtcTest, RefusesOneWrongByteAtEachPlaceOfADay) {
    const std::string right = "2026-01-01";
    ASSERT_TRUE(parseDate(right).has_value());
    for (size_t place = 0; place < right.size(); ++place) {
        for (const char byte : "x:/; .,+TZ\0\xB2"sv) {
            std::string text = right;
            text[place] = byte;
            EXPECT_FALSE(parseDate(text).has_value()) << text;
            EXPECT_FALSE(parseUtc(text).has_value()) << text;
        }
    }
}

TEST(UtcTest, ReadsDaysAlone) {
    EXPECT_EQ(parseDate("1970-01-02")->time_since_epoch().count(), 1);
    EXPECT_EQ(parseDate("2024-02-29")->time_since_epoch().count(), 19782);
    for (const char* const text : {"", "2023-02-29", "1969-12-31", "2024-02-29T00:00:00",
                                   "2024-2-29", "2024-02-2x", "20240229"}) {
        EXPECT_FALSE(parseDate(text).has_value()) << text;
    }
}

TEST(UtcTest, KnowsTheCalendar) {
    EXPECT_EQ(calendarDay(1970, 1, 1)->time_since_epoch().count(), 0);
    EXPECT_EQ(calendarDay(2554, 7, 20)->time_since_epoch().count(), 213502);
    EXPECT_FALSE(calendarDay(2554, 7, 21).has_value());
    EXPECT_FALSE(calendarDay(1969, 12, 31).has_value());
    EXPECT_FALSE(calendarDay(2100, 2, 29).has_value());
    EXPECT_TRUE(calendarDay(2400, 2, 29).has_value());
    EXPECT_FALSE(calendarDay(2024, 4, 31).has_value());
    EXPECT_FALSE(calendarDay(2024, 257, 1).has_value());
    EXPECT_FALSE(calendarDay(2024, 1, 257).has_value());
}

TEST(UtcTest, PutsDayAndTimeTogether) {
    EXPECT_EQ(stampOf(*calendarDay(1994, 3, 23), 45319 * SECOND + 5), 764426119 * SECOND + 5);
    EXPECT_EQ(stampOf(*calendarDay(1994, 3, 23), 86400 * SECOND), 764467200 * SECOND);
    EXPECT_EQ(stampOf(*calendarDay(2554, 7, 20), 86400 * SECOND + 999'999'999),
              18446659200999999999U);
}

TEST(UtcTest, HasNoStampOnADayThatAStampCannotHold) {
    for (const int days : {-1, -1'000'000, 213503, 1'000'000}) {
        EXPECT_EQ(stampOf(std::chrono::sys_days(std::chrono::days(days)), 7 * SECOND), 7 * SECOND)
            << days;
    }
}

TEST(UtcTest, DatesBeginIn1971) {
    EXPECT_FALSE(hasDate(0));
    EXPECT_FALSE(hasDate(stampOfText("1970-03-01")));
    EXPECT_FALSE(hasDate(stampOfText("1971-01-01") - 1));
    EXPECT_TRUE(hasDate(stampOfText("1971-01-01")));
    EXPECT_TRUE(hasDate(UINT64_MAX));
}

}  // namespace utcTest
