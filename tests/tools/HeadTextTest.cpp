#include "tools/report/headText.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

using namespace vextrace;
using namespace vextrace::tools;

namespace headTextTest {
namespace {

constexpr timeStamp_t SECOND = 1000000000;
constexpr timeStamp_t NOON = 1795262400 * SECOND;  // 2026-11-21 12:00:00

void add(Summary& summary, timeStamp_t stamp, const std::string& first,
         const std::string& second = "") {
    GPSTraceMessage message(stamp, first);
    if (!second.empty()) {
        message.addRecord(second);
    }
    const GpsView view(message);
    TraceItem item;
    item.kind = TraceItem::Kind::GPS;
    item.gps = &view;
    summary.add(item, fixOf(view));
}

const std::string RMC = "$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,084.4,211126,,\r\n";
const std::string GGA = "$GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,\r\n";

// Two fixes, a gap, two more 400 m farther north.
Summary someSummary() {
    Summary summary(5 * SECOND);
    const std::string north = "$GPRMC,120000,A,4807.238,N,01131.000,E,022.4,084.4,211126,,\r\n";
    const std::string high = "$GPGGA,120000,4807.238,N,01131.000,E,1,11,0.9,560.4,M,46.9,M,,\r\n";
    add(summary, NOON, RMC, GGA);
    add(summary, NOON + SECOND, RMC, GGA);
    add(summary, NOON + 61 * SECOND, north, high);
    add(summary, NOON + 62 * SECOND, north, high);
    add(summary, NOON + 63 * SECOND, "$GPRMC,120000,V,,,,,,,211126,,*00\r\n");
    TraceItem other;
    other.kind = TraceItem::Kind::OTHER;
    other.id = MSGID_CAN;
    summary.add(other, std::nullopt);
    return summary;
}

std::string text(const Fact& fact) {
    return fact.name + ": " + fact.value + " (" + fact.detail + ")";
}

// From one second behind noon to another.
SurveyedTrace trace(const std::string& name, timeStamp_t first, timeStamp_t last,
                    uint64_t bytes = 0) {
    return {name, bytes, 0, NOON + first * SECOND, NOON + last * SECOND};
}

std::string durationOf(const std::vector<SurveyedTrace>& traces) {
    return text(factsOf(someSummary(), traces)[1]);
}

}  // namespace

TEST(HeadTextTest, TellsTheNumbersOfADrive) {
    const auto facts = factsOf(someSummary(), {trace("drive.trace", 0, 63, 53326)});
    ASSERT_EQ(facts.size(), 11U);
    EXPECT_EQ(text(facts[0]), "Distance: 0 m (371 m more across gaps)");
    EXPECT_EQ(text(facts[1]),
              "Duration: 1 min 03 s (1 gap between messages, the longest 1 min 00 s)");
    EXPECT_EQ(text(facts[2]), "Moving: 2 s (2 km/h or more)");
    EXPECT_EQ(text(facts[3]), "Highest speed: 41.5 km/h ()");
    EXPECT_EQ(text(facts[4]), "Mean speed: 41.5 km/h (while moving; with stops 41.5 km/h)");
    EXPECT_EQ(text(facts[5]), "Altitude: 545.4 to 560.4 m (range 15.0 m)");
    EXPECT_EQ(text(facts[6]), "Satellites: 8 to 11 (median 9.5)");
    EXPECT_EQ(text(facts[7]), "Fixes: 4 (4 valid, 0 not; 1 more with a wrong checksum)");
    EXPECT_EQ(text(facts[8]), "Messages: 5 (1 of other types)");
    EXPECT_EQ(text(facts[9]), "Sentences: 9 (1 with a wrong checksum, 8 with none)");
    EXPECT_EQ(text(facts[10]), "File: drive.trace (53 kB) ()");
}

TEST(HeadTextTest, SumsUpDrivesAndNamesThePausesBetweenThem) {
    EXPECT_EQ(durationOf({trace("a", 0, 60), trace("b", 86460, 86490)}),
              "Duration: 1 min 30 s (sum of 2 drives; 1 gap between messages, the longest 1 min "
              "00 s; 1 d 0 h 00 min 00 s between the drives)");
    EXPECT_EQ(durationOf({trace("b", 100, 110), trace("c", 140, 141), trace("a", 0, 60)}),
              "Duration: 1 min 11 s (sum of 3 drives; 1 gap between messages, the longest 1 min "
              "00 s; 2 pauses between the drives, the longest 40 s)");
    EXPECT_EQ(durationOf({trace("a", 0, 60), trace("b", 30, 90), SurveyedTrace{"none"}}),
              "Duration: 2 min 00 s (sum of 3 drives; 1 gap between messages, the longest 1 min "
              "00 s)");
}

TEST(HeadTextTest, TellsThatThereIsNothing) {
    const auto facts = factsOf(Summary(SECOND), {SurveyedTrace{"a"}});
    for (size_t i = 1; i < 7; ++i) {
        EXPECT_TRUE(facts[i].value == "none" || facts[i].value == "not known") << facts[i].name;
    }
    EXPECT_EQ(spanOf(Summary(SECOND)), "No date is known.");
    EXPECT_TRUE(notesOf(Summary(SECOND)).empty());
}

TEST(HeadTextTest, NamesTheFirstFilesAndCountsTheOthers) {
    std::vector<SurveyedTrace> files(1025, {"b.trace", 1000});
    files[0].name = "folder/a.trace";
    EXPECT_EQ(titleOf({files[0]}), "a.trace");
    EXPECT_EQ(titleOf(files), "a.trace and 1,024 more");
    const std::string names = factsOf(Summary(SECOND), files).back().value;
    EXPECT_EQ(names.substr(0, 40), "folder/a.trace (1.0 kB), b.trace (1.0 kB");
    EXPECT_EQ(names.substr(names.size() - 15), " and 1,005 more");
}

TEST(HeadTextTest, CutsLongNamesBetweenCharacters) {
    const std::string name = std::string(199, 'x').append("°").append(50, 'y');
    EXPECT_EQ(shortName(name), std::string(199, 'x').append("..."));
    EXPECT_EQ(shortName("short"), "short");
}

TEST(HeadTextTest, TellsTheSpanOfTime) {
    EXPECT_EQ(spanOf(someSummary()), "2026-11-21 12:00:00 to 12:01:03 UTC");
}

TEST(HeadTextTest, TellsWhatMustBeKnown) {
    Summary summary = someSummary();
    add(summary, 5 * SECOND, RMC);
    add(summary, NOON, RMC);
    EXPECT_EQ(notesOf(summary),
              (std::vector<std::string>{
                  "1 fix is left out of the track, the charts and the numbers, because a sentence "
                  "has a wrong checksum.",
                  "1 message has no date: their times count from 1970-01-01.",
                  "The time goes back once: the charts show the fixes in order of time, the track "
                  "in the order of the trace."}));
}

TEST(HeadTextTest, ListsTheFirstDamagedPlaces) {
    DamageNotes notes;
    TraceItem damage;
    damage.offset = 12345;
    damage.length = 1;
    damage.reason = "the size field is wrong";
    for (size_t i = 0; i < DamageNotes::MOST + 3; ++i) {
        notes.add("a.trace", damage);
    }
    const auto texts = notes.texts();
    ASSERT_EQ(texts.size(), DamageNotes::MOST + 1);
    EXPECT_EQ(texts[0],
              "a.trace is damaged at byte 12,345: the size field is wrong. 1 byte passed over.");
    EXPECT_EQ(texts.back(), "There are 3 more damaged places.");
}

TEST(HeadTextTest, HasARowPerCode) {
    const auto rows = rowsOf(someSummary().sentences);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].code, "$GPGGA");
    EXPECT_EQ(rows[0].count, "4");
    EXPECT_EQ(rows[0].wrong, "0");
    EXPECT_FALSE(rows[0].hasWrong);
    EXPECT_EQ(rows[0].last, "2026-11-21 12:01:02");
    EXPECT_EQ(rows[1].code, "$GPRMC");
    EXPECT_EQ(rows[1].count, "5");
    EXPECT_EQ(rows[1].wrong, "1");
    EXPECT_TRUE(rows[1].hasWrong);
    EXPECT_EQ(rows[1].first, "2026-11-21 12:00:00");
    EXPECT_EQ(rows[1].last, "2026-11-21 12:01:03");
    EXPECT_EQ(furtherCodes(someSummary().sentences), "");
}

TEST(HeadTextTest, CountsTheSentencesOfFurtherCodes) {
    Summary summary(SECOND);
    for (int i = 0; i < 1500; ++i) {
        add(summary, 0, "$X" + std::to_string(1000 + i) + ",\x1b\r\n");
    }
    const auto rows = rowsOf(summary.sentences);
    ASSERT_EQ(rows.size(), MOST_ROWS);
    EXPECT_EQ(rows[0].code, "$X1000");
    EXPECT_EQ(rows[0].first, "–");
    EXPECT_EQ(furtherCodes(summary.sentences), "And 1,300 sentences of further codes.");
}

}  // namespace headTextTest
