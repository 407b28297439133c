#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libvexstream/EpochBuilder.h"
#include "libvexstream/utc.h"

using namespace vextrace;
using std::string;
using std::vector;

namespace trustedDatesTest {
namespace {

constexpr std::chrono::sys_days NO_DATE;

string rmc(const string& time, const string& date = "") {
    return makeSentence("GPRMC," + time + ",A,4807.038,N,01131.000,E,,," + date + ",,");
}

string gga(const string& time) {
    return makeSentence("GPGGA," + time + ",4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,");
}

string zda(const string& time, const string& date) {
    return makeSentence("GPZDA," + time + "," + date + ",00,00");
}

// The sentence with a checksum that is not its own.
string wrong(string sentence) {
    char& digit = sentence[sentence.find('*') + 2];
    digit = digit == '0' ? '1' : '0';
    return sentence;
}

string unchecked(const string& sentence) {
    return sentence.substr(0, sentence.find('*')) + "\r\n";
}

const string GSV = makeSentence("GPGSV,1,1,00");

// The stamp of each epoch.
vector<string> stamps(const vector<string>& sentences, std::chrono::sys_days date = NO_DATE) {
    EpochBuilder builder(StampSource::SENTENCES, date);
    vector<string> result;
    const auto note = [&](const EpochBuilder::Part& part) {
        if (part.beginsEpoch && part.messages > 0) {
            result.push_back(utcText(part.stamp));
        }
    };
    for (const string& sentence : sentences) {
        note(builder.add(sentence, 0));
    }
    note(builder.take());
    return result;
}

}  // namespace

TEST(TrustedDatesTest, TakesTheFirstDateOfARightSentence) {
    EXPECT_EQ(stamps({gga("120000"), wrong(rmc("120000", "240364")), zda("120000", "23,03,1994")}),
              (vector<string>{"1994-03-23T12:00:00Z"}));
    EXPECT_EQ(stamps({GSV, unchecked(rmc("120000", "240394")), rmc("120000", "230394")}),
              (vector<string>{"1994-03-23T12:00:00Z"}));
}

TEST(TrustedDatesTest, TakesNoDateOfAWrongSentence) {
    EXPECT_EQ(
        stamps({rmc("120000", "230394"), wrong(rmc("120001", "230364")), gga("120002")}),
        (vector<string>{"1994-03-23T12:00:00Z", "1994-03-23T12:00:01Z", "1994-03-23T12:00:02Z"}));
}

TEST(TrustedDatesTest, AWrongSentenceBeginsAnEpochWithItsOwnTime) {
    EXPECT_EQ(
        stamps({rmc("120000", "230394"), wrong(gga("180000")), rmc("120001")}),
        (vector<string>{"1994-03-23T12:00:00Z", "1994-03-23T18:00:00Z", "1994-03-23T12:00:01Z"}));
}

TEST(TrustedDatesTest, ForgetsAnEpochWithoutATrustedTime) {
    EXPECT_EQ(
        stamps({rmc("100000", "230394"), wrong(gga("235959")), gga("100002")}),
        (vector<string>{"1994-03-23T10:00:00Z", "1994-03-23T23:59:59Z", "1994-03-23T10:00:02Z"}));
    EXPECT_EQ(
        stamps({rmc("235958", "230394"), wrong(gga("035959")), gga("235959")}),
        (vector<string>{"1994-03-23T23:59:58Z", "1994-03-24T03:59:59Z", "1994-03-23T23:59:59Z"}));
    EXPECT_EQ(
        stamps({rmc("235959", "230394"), wrong(gga("000000")), gga("000001")}),
        (vector<string>{"1994-03-23T23:59:59Z", "1994-03-24T00:00:00Z", "1994-03-24T00:00:01Z"}));
}

TEST(TrustedDatesTest, OneRightTimeMakesAnEpochTrusted) {
    EXPECT_EQ(stamps({rmc("235959", "230394"), wrong(rmc("000000")), gga("000000"), gga("130000"),
                      gga("000000")}),
              (vector<string>{"1994-03-23T23:59:59Z", "1994-03-24T00:00:00Z",
                              "1994-03-24T13:00:00Z", "1994-03-25T00:00:00Z"}));
}

TEST(TrustedDatesTest, TrustsASourceThatSendsNoRightChecksum) {
    EXPECT_EQ(
        stamps({wrong(rmc("235959", "230394")), wrong(gga("000000")), unchecked(gga("000001")),
                wrong(GSV)}),
        (vector<string>{"1994-03-23T23:59:59Z", "1994-03-24T00:00:00Z", "1994-03-24T00:00:01Z"}));
}

TEST(TrustedDatesTest, AnyRightSentenceEndsTheTrustInOthers) {
    EXPECT_EQ(stamps({unchecked(rmc("120000", "230394")), GSV, unchecked(rmc("120001", "240394")),
                      unchecked(gga("230000")), unchecked(gga("100000"))}),
              (vector<string>{"1994-03-23T12:00:00Z", "1994-03-23T12:00:01Z",
                              "1994-03-23T23:00:00Z", "1994-03-23T10:00:00Z"}));
}

TEST(TrustedDatesTest, KeepsWhatWasTrustedBeforeTheFirstRightSentence) {
    EXPECT_EQ(stamps({unchecked(rmc("235959", "230394")), gga("000000")}),
              (vector<string>{"1994-03-23T23:59:59Z", "1994-03-24T00:00:00Z"}));
    EXPECT_EQ(stamps({wrong(rmc("235959", "230364")), gga("000000")}),
              (vector<string>{"2064-03-23T23:59:59Z", "2064-03-24T00:00:00Z"}));
    EXPECT_EQ(stamps({wrong(rmc("120000", "230364")), GSV, gga("120000"), gga("120001")}),
              (vector<string>{"2064-03-23T12:00:00Z", "2064-03-23T12:00:01Z"}));
}

TEST(TrustedDatesTest, TakesTheVerdictThatItIsGiven) {
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    builder.add(GSV, Checksum::RIGHT, 0);
    builder.add(rmc("120000", "230394"), Checksum::WRONG, 0);
    EXPECT_EQ(utcText(builder.take().stamp), "1970-01-01T12:00:00Z");
}

TEST(TrustedDatesTest, ADayBeyondTheLastOneIsNoDate) {
    EXPECT_EQ(stamps({gga("235959"), gga("000000"), gga("000001"), zda("000002", "20,07,2554")},
                     *calendarDay(2554, 7, 20)),
              (vector<string>{"2554-07-20T23:59:59Z", "1970-01-01T00:00:00Z",
                              "1970-01-01T00:00:01Z", "2554-07-20T00:00:02Z"}));
    for (const int days : {-1, 213503, 100'000'000}) {
        EXPECT_EQ(stamps({gga("120000")}, std::chrono::sys_days(std::chrono::days(days))),
                  (vector<string>{"1970-01-01T12:00:00Z"}))
            << days;
    }
}

}  // namespace trustedDatesTest
