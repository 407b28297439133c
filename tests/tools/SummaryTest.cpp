#include "tools/trace/Summary.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "tests/stream/traces.h"
#include "tools/trace/summaryText.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace summaryTest {
namespace {

constexpr timeStamp_t SECOND = 1'000'000'000;
constexpr timeStamp_t NOON = 764'424'000 * SECOND;  // 1994-03-23T12:00:00Z
constexpr timeStamp_t GAP = 5 * SECOND;

std::string withChecksum(const std::string& sentence) {
    unsigned sum = 0;
    for (const char c : sentence.substr(1)) {
        sum ^= static_cast<unsigned char>(c);
    }
    return sentence + fmt::format("*{:02X}\r\n", sum);
}

struct FixOptions {
    double latitude = 48;
    double longitude = 11;
    std::string status = "A";
    std::string satellites = "08";
    std::string altitude = "545.4";
    std::string knots = "10";
};

std::string coordinate(double degrees, int width) {
    const double positive = std::abs(degrees);
    const int whole = static_cast<int>(positive);
    return fmt::format("{:0{}}{:07.4f}", whole, width, (positive - whole) * 60);
}

std::string rmc(const FixOptions& fix) {
    return withChecksum(fmt::format("$GPRMC,120000,{},{},{},{},{},{},084.4,230394,,,A", fix.status,
                                    coordinate(fix.latitude, 2), fix.latitude < 0 ? "S" : "N",
                                    coordinate(fix.longitude, 3), fix.longitude < 0 ? "W" : "E",
                                    fix.knots));
}

std::string gga(const FixOptions& fix) {
    return withChecksum(fmt::format("$GPGGA,120000,{},{},{},{},1,{},0.9,{},M,46.9,M,,",
                                    coordinate(fix.latitude, 2), fix.latitude < 0 ? "S" : "N",
                                    coordinate(fix.longitude, 3), fix.longitude < 0 ? "W" : "E",
                                    fix.satellites, fix.altitude));
}

TraceBytes fixAt(timeStamp_t stamp, const FixOptions& fix = {}) {
    return messageOf(22, stamp, gga(fix) + rmc(fix));
}

TraceBytes plain(timeStamp_t stamp) {
    return messageOf(22, stamp, "$PXYZ\n");
}

void addTrace(Summary& summary, const std::vector<TraceBytes>& messages) {
    const TraceBytes bytes = joined(messages);
    MemorySource source(bytes);
    TraceReader trace(source);
    FixReader fixes;
    for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END; item = trace.next()) {
        summary.add(item, item.gps != nullptr ? fixes.read(*item.gps) : std::nullopt);
    }
    summary.endTrace();
}

Summary summaryOf(const std::vector<TraceBytes>& messages, timeStamp_t gap = GAP) {
    Summary summary(gap);
    addTrace(summary, messages);
    return summary;
}

using Codes = std::map<std::string, uint64_t>;

Codes codesOf(const SentenceCounts& counts) {
    Codes codes;
    for (const SentenceCounts::Row& row : counts.rows()) {
        codes.emplace(row.code, row.number);
    }
    return codes;
}

}  // namespace

TEST(SummaryTest, CountsBytesMessagesAndDamage) {
    const Summary summary = summaryOf({fixAt(NOON),
                                       {0, 0, 7},
                                       messageOf(1, 0, "\x01"),
                                       messageOf(0xC001, 0, ""),
                                       messageOf(1, 0, "\x02"),
                                       plain(NOON),
                                       {0, 99}});
    EXPECT_EQ(summary.bytes, fixAt(NOON).size() + 3 + 15 + 14 + 15 + 20 + 2);
    EXPECT_EQ(summary.gpsMessages, 2U);
    EXPECT_EQ(summary.otherMessages, 3U);
    EXPECT_EQ(summary.otherById,
              (std::map<msgid_t, uint64_t>{{MSGID_CAN, 2}, {static_cast<msgid_t>(0xC001), 1}}));
    EXPECT_EQ(summary.damagedPlaces, 2U);
    EXPECT_EQ(summary.damagedBytes, 5U);
}

TEST(SummaryTest, CountsSentencesByCode) {
    const Summary summary =
        summaryOf({messageOf(22, 1, "$GPGSV,1\n$PA\r\n"), messageOf(22, 2, "$GPGSV,2\n$GPRMC,1\n"),
                   plain(3), messageOf(22, 4, "$GPGSV,3\n$PXYZ,1\n")});
    EXPECT_EQ(codesOf(summary.sentences),
              (Codes{{"$GPGSV", 3}, {"$GPRMC", 1}, {"$PA", 1}, {"$PXYZ", 1}, {"$PXYZ,", 1}}));
    EXPECT_EQ(summary.sentences.total(), 7U);
    EXPECT_EQ(summary.sentences.others(), 0U);
}

TEST(SummaryTest, TellsAThousandCodesApart) {
    SentenceCounts counts;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 1500; ++i) {
            counts.add(fmt::format("${:05}", i));
        }
    }
    EXPECT_EQ(counts.total(), 3000U);
    EXPECT_EQ(counts.others(), 1000U);
    EXPECT_EQ(counts.rows().size(), 1000U);
    EXPECT_EQ(codesOf(counts)["$00999"], 2U);
}

TEST(SummaryTest, CountsChecksumsOfAllSentences) {
    const std::string right = withChecksum("$GPGSA,A");
    const std::string wrong = "$GPGSV,1*00\r\n";
    const Summary summary = summaryOf(
        {messageOf(22, 1, right + wrong + "$PNONE\n"), messageOf(22, 2, wrong + "$PNONE,*1G\n")});
    EXPECT_EQ(summary.wrongChecksums, 2U);
    EXPECT_EQ(summary.noChecksums, 2U);
}

TEST(SummaryTest, TellsOfEachCodeItsWrongChecksumsAndItsTimes) {
    const std::string right = withChecksum("$GPGSA,A");
    const std::string wrong = "$GPGSA,1*00\r\n";
    const timeStamp_t undated = 3600 * SECOND;
    const std::vector<TraceBytes> first = {messageOf(22, NOON + 7, right + "$PNONE\n"),
                                           messageOf(22, undated, wrong + "$PDAY,\n")};
    const std::vector<TraceBytes> second = {messageOf(22, NOON + 9, "$PNONE\n"),
                                            messageOf(22, NOON + 2, wrong)};
    Summary all = summaryOf(first);
    addTrace(all, second);
    const std::vector<SentenceCounts::Row> rows = all.sentences.rows();
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].code, "$GPGSA");
    EXPECT_EQ(rows[0].number, 3U);
    EXPECT_EQ(rows[0].wrongChecksums, 2U);
    EXPECT_EQ(rows[0].first, NOON + 2);
    EXPECT_EQ(rows[0].last, NOON + 7);
    EXPECT_EQ(rows[1].code, "$PDAY,");
    EXPECT_EQ(rows[1].wrongChecksums, 0U);
    EXPECT_FALSE(rows[1].first);
    EXPECT_EQ(rows[2].code, "$PNONE");
    EXPECT_EQ(rows[2].number, 2U);
    EXPECT_EQ(rows[2].first, NOON + 7);
    EXPECT_EQ(rows[2].last, NOON + 9);
}

TEST(SummaryTest, KnowsHowLongAndHowFastItMoved) {
    const auto at = [](timeStamp_t seconds, const char* knots) {
        return fixAt(NOON + seconds * SECOND, {.knots = knots});
    };
    // 15 and 10 knots in the mean; then a gap, and 20 and 0 behind it.
    Summary all = summaryOf({at(0, "10"), at(1, "20"), at(3, "0"), at(60, "20"), at(61, "20"),
                             at(62, "0"), at(63, "0")});
    EXPECT_EQ(all.motion.known(), 6 * SECOND);
    EXPECT_EQ(all.motion.moving(), 5 * SECOND);
    EXPECT_DOUBLE_EQ(*all.motion.mean(), (15 + 2 * 10 + 20 + 10) * 1.852 / 6);
    EXPECT_DOUBLE_EQ(*all.motion.meanWhileMoving(), (15 + 2 * 10 + 20 + 10) * 1.852 / 5);
    addTrace(all, {at(0, "30"), at(2, "30")});
    EXPECT_EQ(all.motion.known(), 8 * SECOND);
}

TEST(SummaryTest, KnowsTheEarliestAndTheLatestTime) {
    const Summary summary = summaryOf({plain(NOON + 2), plain(NOON + 1), plain(NOON + 7)});
    EXPECT_EQ(summary.times().first, NOON + 1);
    EXPECT_EQ(summary.times().last, NOON + 7);
    EXPECT_EQ(summary.times().stepsBack, 1U);
    EXPECT_EQ(summary.messagesWithoutDate, 0U);
    EXPECT_FALSE(summaryOf({messageOf(1, NOON, "")}).times().first.has_value());
}

TEST(SummaryTest, TimesWithoutADateCountWhereThereAreNoOthers) {
    const timeStamp_t hour = 3600 * SECOND;
    Summary summary = summaryOf({plain(hour), plain(hour + 1)});
    EXPECT_EQ(summary.times().first, hour);
    EXPECT_EQ(summary.times().last, hour + 1);
    EXPECT_EQ(summary.messagesWithoutDate, 2U);
    summary = summaryOf({plain(hour), plain(0), plain(NOON), plain(hour)});
    EXPECT_EQ(summary.times().first, NOON);
    EXPECT_EQ(summary.times().last, NOON);
    EXPECT_EQ(summary.times().gapCount, 0U);
    EXPECT_EQ(summary.messagesWithoutDate, 3U);
}

TEST(SummaryTest, APauseLongerThanAllowedIsAGap) {
    const Summary summary = summaryOf({plain(NOON), plain(NOON + GAP), plain(NOON + 2 * GAP + 1),
                                       plain(NOON), plain(NOON + GAP + 2), plain(NOON + GAP + 3)});
    const TimeSpan& times = summary.times();
    EXPECT_EQ(times.gapCount, 2U);
    ASSERT_EQ(times.gaps.size(), 2U);
    EXPECT_EQ(times.gaps[0].begin, NOON + GAP);
    EXPECT_EQ(times.gaps[0].end, NOON + 2 * GAP + 1);
    EXPECT_EQ(times.longestGap->begin, NOON);
    EXPECT_EQ(times.longestGap->length(), GAP + 2);
    EXPECT_EQ(times.stepsBack, 1U);
}

TEST(SummaryTest, ListsAHundredGaps) {
    std::vector<TraceBytes> messages;
    for (timeStamp_t i = 0; i < 201; ++i) {
        messages.push_back(plain(NOON + i * i * SECOND));
    }
    const Summary summary = summaryOf(messages, 0);
    EXPECT_EQ(summary.times().gapCount, 200U);
    EXPECT_EQ(summary.times().gaps.size(), 100U);
    EXPECT_EQ(summary.times().longestGap->length(), 399 * SECOND);
}

TEST(SummaryTest, CountsFixesByValidity) {
    TraceBytes doubtful = messageOf(22, NOON, gga({}));
    doubtful[40] = static_cast<uint8_t>(doubtful[40] ^ 1);
    const Summary summary =
        summaryOf({fixAt(NOON + 1), fixAt(NOON + 2, {.status = "V"}), fixAt(NOON + 3), doubtful,
                   plain(NOON + 4), messageOf(22, NOON + 5, gga({})),
                   messageOf(22, NOON + 6, rmc({.latitude = 99}))});
    EXPECT_EQ(summary.validFixes, 3U);
    EXPECT_EQ(summary.invalidFixes, 2U);
    EXPECT_EQ(summary.doubtfulFixes, 1U);
    EXPECT_EQ(summary.repeatedFixes, 0U);
}

TEST(SummaryTest, AWrongSentenceTakesNoRightOneAlong) {
    TraceBytes wrongGga = fixAt(NOON);
    wrongGga[40] = static_cast<uint8_t>(wrongGga[40] ^ 1);
    TraceBytes wrongRmc = fixAt(NOON + 1);
    wrongRmc[wrongRmc.size() - 3] = static_cast<uint8_t>(wrongRmc[wrongRmc.size() - 3] ^ 1);
    const Summary summary = summaryOf({wrongGga, wrongRmc});
    EXPECT_EQ(summary.validFixes, 2U);
    EXPECT_EQ(summary.doubtfulFixes, 0U);
    EXPECT_EQ(summary.wrongChecksums, 2U);
}

// The checksum of "$GLRMC".
TEST(SummaryTest, CountsAnotherTalkerOfRmcAsWrong) {
    const std::string right = withChecksum("$GPRMC,120000,A,4807.038,N,01131.000,E,,,230394,,,A");
    std::string other = withChecksum("$GLRMC,120000,A,4807.038,N,01131.000,E,,,230394,,,A");
    other[2] = 'P';
    const Summary summary = summaryOf({messageOf(22, NOON, right), messageOf(22, NOON + 1, other),
                                       messageOf(22, NOON + 2, other)});
    EXPECT_EQ(summary.wrongChecksums, 1U);
    EXPECT_EQ(summary.doubtfulFixes, 1U);
    EXPECT_EQ(summary.validFixes, 2U);
}

TEST(SummaryTest, CountsWhatRepeatsAFixAlone) {
    const Summary summary = summaryOf(
        {fixAt(NOON), messageOf(22, NOON, gga({.satellites = "12", .altitude = "9"})),
         fixAt(NOON + 1, {.status = "V"}), messageOf(22, NOON + 1, rmc({.status = "V"}))});
    EXPECT_EQ(summary.validFixes, 1U);
    EXPECT_EQ(summary.invalidFixes, 1U);
    EXPECT_EQ(summary.repeatedFixes, 2U);
    EXPECT_EQ(summary.satellites.most(), 8U);
    EXPECT_EQ(summary.altitude.least, 545.4);
}

TEST(SummaryTest, ValuesAreThoseOfValidFixes) {
    const FixOptions bad = {.latitude = 70,
                            .longitude = 100,
                            .status = "V",
                            .satellites = "99",
                            .altitude = "9999",
                            .knots = "999"};
    const Summary summary =
        summaryOf({fixAt(NOON + 7, bad),
                   fixAt(NOON + 8, {.satellites = "04", .altitude = "-3.5", .knots = "0"}),
                   fixAt(NOON + 9, {.satellites = "12", .altitude = "545.4", .knots = "20"}),
                   fixAt(NOON + 10, {.satellites = "", .altitude = "", .knots = ""}),
                   fixAt(NOON + 11, {.satellites = "05", .altitude = "2", .knots = "10"}),
                   fixAt(NOON + 12, {.satellites = "256", .altitude = "2", .knots = "10"}),
                   fixAt(NOON + 13, {.satellites = "6", .altitude = "2", .knots = "10"}),
                   fixAt(NOON + 14, bad)});
    EXPECT_EQ(summary.satellites.least(), 4U);
    EXPECT_EQ(summary.satellites.median(), 5.5);
    EXPECT_EQ(summary.satellites.most(), 12U);
    EXPECT_EQ(summary.altitude.least, -3.5);
    EXPECT_EQ(summary.altitude.greatest, 545.4);
    EXPECT_EQ(summary.speed.greatest, 20 * 1.852);
    EXPECT_EQ(summary.positions.box()->north, 48);
    EXPECT_EQ(summary.path.metres(), 0);
}

TEST(SummaryTest, WithoutFixesThereAreNoValues) {
    const Summary summary = summaryOf({plain(NOON)});
    EXPECT_FALSE(summary.satellites.least() || summary.satellites.median() ||
                 summary.satellites.most());
    EXPECT_FALSE(summary.altitude.least || summary.altitude.greatest || summary.speed.greatest);
    EXPECT_FALSE(summary.positions.box());
}

TEST(SummaryTest, ADistanceLeadsFromFixToFix) {
    constexpr double DEGREE = 111'319.4908;  // of the equator
    const Summary summary =
        summaryOf({fixAt(NOON, {.latitude = 0, .longitude = 179.5}), plain(NOON + 1),
                   fixAt(NOON + GAP, {.latitude = 0, .longitude = -179.5}),
                   fixAt(NOON + 1, {.latitude = 0, .longitude = 0, .status = "V"}),
                   fixAt(NOON, {.latitude = 0, .longitude = -179})});
    EXPECT_NEAR(summary.path.metres(), 1.5 * DEGREE, 0.01);
    EXPECT_EQ(summary.path.metresAcrossGaps(), 0);
    EXPECT_EQ(summary.positions.box()->west, 179.5);
    EXPECT_EQ(summary.positions.box()->east, -179);
}

TEST(SummaryTest, ADistanceAcrossAGapIsCountedApart) {
    constexpr double DEGREE = 111'319.4908;  // of the equator
    const auto at = [](timeStamp_t stamp, double longitude) {
        return fixAt(stamp, {.latitude = 0, .longitude = longitude});
    };
    const std::vector<TraceBytes> drive = {at(NOON, 1),           at(NOON + GAP + 1, 3),
                                           at(NOON + GAP + 2, 4), plain(NOON + 2 * GAP),
                                           at(NOON + 3 * GAP, 8), at(NOON + GAP, 16)};
    Summary summary(GAP);
    addTrace(summary, drive);
    EXPECT_NEAR(summary.path.metres(), DEGREE, 0.01);
    EXPECT_NEAR(summary.path.metresAcrossGaps(), (2 + 4 + 8) * DEGREE, 0.01);
    addTrace(summary, drive);
    EXPECT_NEAR(summary.path.metresAcrossGaps(), 28 * DEGREE, 0.01);
}

TEST(SummaryTest, NeitherDistanceNorMovingTimeLeadsToAnotherTrace) {
    Summary summary(GAP);
    for (const timeStamp_t stamp : {NOON, NOON + SECOND}) {
        addTrace(summary, {fixAt(stamp, {.longitude = stamp == NOON ? 10.0 : 11.0})});
    }
    EXPECT_EQ(summary.validFixes, 2U);
    EXPECT_EQ(summary.path.metres(), 0);
    EXPECT_EQ(summary.path.metresAcrossGaps(), 0);
    EXPECT_EQ(summary.motion.known(), 0U);
}

TEST(SummaryTest, AddsUpSeveralTraces) {
    Summary all(GAP);
    const std::vector<TraceBytes> first = {
        fixAt(NOON, {.longitude = 10, .satellites = "4", .altitude = "1", .knots = "5"}),
        fixAt(NOON + 10 * SECOND, {.longitude = 10.5}),
        {0}};
    const std::vector<TraceBytes> second = {
        messageOf(1, 0, ""), plain(7),
        fixAt(NOON + 100 * SECOND,
              {.latitude = -1, .satellites = "5", .altitude = "900", .knots = "50"}),
        fixAt(NOON + 120 * SECOND, {.latitude = -1, .longitude = 12})};
    const Summary one = summaryOf(first);
    const Summary two = summaryOf(second);
    addTrace(all, first);
    addTrace(all, second);
    addTrace(all, {});
    EXPECT_EQ(all.bytes, one.bytes + two.bytes);
    EXPECT_EQ(all.gpsMessages, 5U);
    EXPECT_EQ(all.otherById, (std::map<msgid_t, uint64_t>{{MSGID_CAN, 1}}));
    EXPECT_EQ(all.damagedPlaces, 1U);
    EXPECT_EQ(codesOf(all.sentences), (Codes{{"$GPGGA", 4}, {"$GPRMC", 4}, {"$PXYZ", 1}}));
    EXPECT_EQ(all.noChecksums, 1U);
    EXPECT_EQ(all.messagesWithoutDate, 1U);
    EXPECT_EQ(all.times().first, NOON);
    EXPECT_EQ(all.times().last, NOON + 120 * SECOND);
    EXPECT_EQ(all.times().gapCount, 2U);
    EXPECT_EQ(all.times().gaps.size(), 2U);
    EXPECT_EQ(all.times().longestGap->length(), 20 * SECOND);
    EXPECT_EQ(all.validFixes, 4U);
    EXPECT_EQ(all.satellites.least(), 4U);
    EXPECT_EQ(all.satellites.median(), 6.5);
    EXPECT_EQ(all.altitude.greatest, 900);
    EXPECT_EQ(all.speed.greatest, 50 * 1.852);
    EXPECT_DOUBLE_EQ(all.path.metres(), one.path.metres() + two.path.metres());
    EXPECT_EQ(all.positions.box()->south, -1);
    EXPECT_EQ(all.positions.box()->west, 10);
    EXPECT_EQ(all.positions.box()->east, 12);
}

TEST(SummaryTest, IsSaidInWords) {
    const FixOptions east = {.latitude = 0, .longitude = 179.5};
    const FixOptions west = {.latitude = 0, .longitude = -179.5, .satellites = "11", .knots = "20"};
    const FixOptions last = {.latitude = 0, .longitude = -178.5, .altitude = "0"};
    const std::vector<TraceBytes> messages = {fixAt(NOON, east),
                                              fixAt(NOON + 12'500'000'000, west),
                                              fixAt(NOON + 13 * SECOND, last),
                                              plain(5),
                                              messageOf(0x4711, 0, ""),
                                              messageOf(22, NOON, "$P\x1B\n"),
                                              messageOf(1, 0, ""),
                                              {0}};
    EXPECT_EQ(summaryText(summaryOf(messages), true),
              fmt::format("  bytes           {}\n", joined(messages).size()) +
                  "  messages        5 GPS, 2 of other types: MSGID_CAN (1) 1, unnamed (18193) 1\n"
                  "  damage          1 place, 1 byte passed over\n"
                  "  sentences       8: $GPGGA 3, $GPRMC 3, $P\\x1b 1, $PXYZ 1\n"
                  "  checksums       0 wrong, 2 missing\n"
                  "  time            1994-03-23T12:00:00Z to 1994-03-23T12:00:13Z, 13 s; "
                  "1 message without a date; 1 step back\n"
                  "  gaps > 5 s      1, the longest 12.5 s after 1994-03-23T12:00:00Z\n"
                  "  fixes           3 valid, 0 not valid, 0 with a wrong checksum\n"
                  "  satellites      8 least, 8 median, 11 most\n"
                  "  distance        111.319 km; 111.319 km across gaps\n"
                  "  highest speed   37.0 km/h\n"
                  "  altitude        0.0 m to 545.4 m\n"
                  "  box             latitude 0.0000000 to 0.0000000 deg, longitude 179.5000000 to "
                  "-178.5000000 deg, across the 180th meridian\n");
}

TEST(SummaryTest, SaysNoneOfWhatIsMissing) {
    EXPECT_EQ(summaryText(summaryOf({}, 1'250'000'000), true),
              "  bytes           0\n"
              "  messages        0 GPS, 0 of other types\n"
              "  damage          none\n"
              "  sentences       0\n"
              "  checksums       0 wrong, 0 missing\n"
              "  time            none\n"
              "  gaps > 1.25 s   none\n"
              "  fixes           0 valid, 0 not valid, 0 with a wrong checksum\n"
              "  satellites      none\n"
              "  distance        0.000 km\n"
              "  highest speed   none\n"
              "  altitude        none\n"
              "  box             none\n");
}

}  // namespace summaryTest
