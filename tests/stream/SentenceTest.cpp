#include "libvexstream/sentence.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vextrace;
using std::chrono::sys_days;
using std::chrono::year_month_day;

namespace sentenceTest {
namespace {

constexpr const char* GNRMC =
    "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*19";
constexpr const char* GPRMC =
    "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*19";
constexpr uint64_t SECOND = 1'000'000'000;

std::string digitsOf(std::string_view text) {
    const auto time = TimeOfDay::parse(text);
    return time ? time->digits : "none";
}

uint64_t nanosecondsOf(std::string_view text) {
    const auto time = TimeOfDay::parse(text);
    return time ? time->nanoseconds : UINT64_MAX;
}

std::string timeDigits(std::string_view sentence) {
    const auto time = timeOf(sentence);
    return time ? time->digits : "none";
}

int dayOf(std::string_view sentence) {
    const auto date = dateOf(sentence);
    if (!date) {
        return 0;
    }
    const year_month_day d(*date);
    return static_cast<int>(d.year()) * 10000 +
           static_cast<int>(static_cast<unsigned>(d.month())) * 100 +
           static_cast<int>(static_cast<unsigned>(d.day()));
}

std::string rmcOn(std::string_view date) {
    return "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4," + std::string(date) +
           ",003.1,W*00";
}

std::string zdaOn(std::string_view date) {
    return "$GPZDA,123519," + std::string(date) + ",00,00*00";
}

}  // namespace

TEST(SentenceTest, SumsUpAText) {
    EXPECT_EQ(checksumOf(""), 0);
    EXPECT_EQ(checksumOf("A"), 0x41);
    EXPECT_EQ(checksumOf("AAB"), 0x42);
    EXPECT_EQ(checksumOf("PVEXT,LOG,1,DRIVE,1HZ"), 0x55);
    EXPECT_EQ(checksumOf("\xff"), 0xff);
}

TEST(SentenceTest, MakesASentence) {
    EXPECT_EQ(makeSentence("PVEXT,LOG,1,DRIVE,1HZ"), "$PVEXT,LOG,1,DRIVE,1HZ*55\r\n");
    EXPECT_EQ(makeSentence("GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A"),
              "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*62\r\n");
    EXPECT_EQ(makeSentence("z0"), "$z0*4A\r\n");  // digits of the checksum are capitals
    EXPECT_EQ(makeSentence("AA"), "$AA*00\r\n");
    EXPECT_EQ(makeSentence(" ~"), "$ ~*5E\r\n");
}

TEST(SentenceTest, MakesNoSentenceOfWhatCannotStandInOne) {
    for (const std::string_view content :
         {"GPTXT,a$b", "GPTXT,a!b", "GPTXT,a*b", "GPTXT,a\r", "\nGPTXT", "GPTXT,\x1f", "GPTXT,\x7f",
          "GPTXT,\xc3\xa4"}) {
        EXPECT_THROW(makeSentence(content), std::invalid_argument) << content;
    }
    EXPECT_THROW(makeSentence(std::string_view("a\0b", 3)), std::invalid_argument);
}

TEST(SentenceTest, JudgesAReceivedChecksum) {
    EXPECT_EQ(receivedChecksum("$PVEXT,LOG,1,DRIVE,1HZ*55"), Checksum::RIGHT);
    EXPECT_EQ(receivedChecksum("$PVEXT,LOG,1,DRIVE,1HZ*54"), Checksum::WRONG);
    EXPECT_EQ(receivedChecksum("$PVEXT,LOG,1,DRIVE,1HZ*45"), Checksum::WRONG);
    EXPECT_EQ(receivedChecksum("$PVEXT,LOG,1,DRIVE,2HZ*55"), Checksum::WRONG);
    EXPECT_EQ(receivedChecksum("!PVEXT,LOG,1,DRIVE,1HZ*55"), Checksum::RIGHT);
}

TEST(SentenceTest, JudgesAReceivedChecksumWithAnyLineEnd) {
    for (const char* const end : {"", "\n", "\r\n", "\r\r\n", "\r"}) {
        EXPECT_EQ(receivedChecksum("$PA*11" + std::string(end)), Checksum::RIGHT);
        EXPECT_EQ(receivedChecksum("$PA*12" + std::string(end)), Checksum::WRONG);
        EXPECT_EQ(receivedChecksum("$PA" + std::string(end)), Checksum::NONE);
    }
}

TEST(SentenceTest, ReadsHexDigitsOfEitherCase) {
    EXPECT_EQ(receivedChecksum("$GNRMC,,V,,,,,,,,,,N*4D"), Checksum::RIGHT);
    EXPECT_EQ(receivedChecksum("$GNRMC,,V,,,,,,,,,,N*4d"), Checksum::RIGHT);
    EXPECT_EQ(receivedChecksum("$*00"), Checksum::RIGHT);
    EXPECT_EQ(receivedChecksum("$k\xA0*cB"), Checksum::RIGHT);
    EXPECT_EQ(receivedChecksum("$k\xA0*Cb"), Checksum::RIGHT);
}

TEST(SentenceTest, FindsNoChecksumWhereNoneIs) {
    for (const char* const text :
         {"", "$", "\n", "*00", "$GPRMC", "$GPRMC*", "$GPRMC*4", "$GPRMC*4G", "$GPRMC*G4",
          "$GPRMC*4D ", "$GPRMC*4D4", "$GPRMC,4D", "$GPRMC*-1", "$GPRMC* 1", "$GPRMC*@1",
          "$GPRMC*:1", "$GPRMC*`1", "$GPRMC*/1"}) {
        EXPECT_EQ(receivedChecksum(text), Checksum::NONE) << text;
        EXPECT_EQ(storedChecksum(text), Checksum::NONE) << text;
    }
}

TEST(SentenceTest, SumsUpToTheLastStar) {
    EXPECT_EQ(receivedChecksum("$A*B*29"), Checksum::RIGHT);
    EXPECT_EQ(receivedChecksum("$A*41*5A"), Checksum::WRONG);
    EXPECT_EQ(receivedChecksum("$**2A"), Checksum::RIGHT);
}

TEST(SentenceTest, TriesTheTalkersThatBecomeGP) {
    const std::vector<std::pair<char, const char*>> received = {
        {'A', "07"}, {'B', "04"}, {'I', "0F"}, {'L', "0A"}, {'N', "08"}, {'P', "16"}};
    for (const auto& [letter, sum] : received) {
        const std::string tail = std::string("PQ*") + sum + "\r\n";
        EXPECT_EQ(receivedChecksum(std::string("$G") + letter + tail), Checksum::RIGHT) << letter;
        EXPECT_EQ(storedChecksum("$GP" + tail), Checksum::RIGHT) << letter;
    }
    for (const char* const sum : {"17", "05", "02", "1E", "FF", "86"}) {
        EXPECT_EQ(storedChecksum("$GPPQ*" + std::string(sum)), Checksum::WRONG) << sum;
    }
}

TEST(SentenceTest, TriesTheTalkerGQForSatellitesAlone) {
    for (const char* const tail : {"GSV,1*49", "GSA,1*5E"}) {
        EXPECT_EQ(receivedChecksum("$GQ" + std::string(tail)), Checksum::RIGHT) << tail;
        EXPECT_EQ(storedChecksum("$GP" + std::string(tail)), Checksum::RIGHT) << tail;
    }
    for (const char* const tail : {"GGA,1*4A", "RMC,1*57", "GSVX,1*11"}) {
        EXPECT_EQ(receivedChecksum("$GQ" + std::string(tail)), Checksum::RIGHT) << tail;
        EXPECT_EQ(storedChecksum("$GP" + std::string(tail)), Checksum::WRONG) << tail;
    }
}

TEST(SentenceTest, TriesOtherTalkersOnlyBehindGP) {
    EXPECT_EQ(storedChecksum(GNRMC), receivedChecksum(GNRMC));
    EXPECT_EQ(storedChecksum("$BDPQ*08"), Checksum::WRONG);
    EXPECT_EQ(storedChecksum("!GPPQ*08"), Checksum::WRONG);
    EXPECT_EQ(storedChecksum("$GNPQ*16"), Checksum::WRONG);
    EXPECT_EQ(storedChecksum("!GPPQ*16"), Checksum::RIGHT);
}

TEST(SentenceTest, TakesTheLineEndOff) {
    EXPECT_EQ(withoutLineEnd("$PA\r\n"), "$PA");
    EXPECT_EQ(withoutLineEnd("$PA\n"), "$PA");
    EXPECT_EQ(withoutLineEnd("$PA\r\r\n"), "$PA");
    EXPECT_EQ(withoutLineEnd("$PA\r"), "$PA");
    EXPECT_EQ(withoutLineEnd("$PA"), "$PA");
    EXPECT_EQ(withoutLineEnd("$P\rA\r\n"), "$P\rA");
    EXPECT_EQ(withoutLineEnd("$PA\n\n"), "$PA\n");
    EXPECT_EQ(withoutLineEnd("\r\n"), "");
    EXPECT_EQ(withoutLineEnd(""), "");
}

TEST(SentenceTest, SplitsFields) {
    constexpr std::string_view SENTENCE = "$GPGGA,1,,three*47,5\r\n";
    EXPECT_EQ(field(SENTENCE, 0), "$GPGGA");
    EXPECT_EQ(field(SENTENCE, 1), "1");
    EXPECT_EQ(field(SENTENCE, 2), "");
    EXPECT_EQ(field(SENTENCE, 3), "three");
    EXPECT_EQ(field(SENTENCE, 4), "");
    EXPECT_EQ(field(SENTENCE, 99), "");
    EXPECT_EQ(field("$GPGGA,1,last\r\n", 2), "last");
    EXPECT_EQ(field("$GPGGA,1,last", 2), "last");
    EXPECT_EQ(field("$GPGGA*47", 0), "$GPGGA");
    EXPECT_EQ(field("", 0), "");
    EXPECT_EQ(field("", 1), "");
}

TEST(SentenceTest, HasNoFieldOfAnyHighNumber) {
    EXPECT_EQ(field(",", 1), "");
    EXPECT_EQ(field(",a", 1), "a");
    EXPECT_EQ(field("$GPGGA,1", std::numeric_limits<size_t>::max()), "");
}

TEST(SentenceTest, ReadsTimesOfDay) {
    EXPECT_EQ(nanosecondsOf("000000"), 0U);
    EXPECT_EQ(nanosecondsOf("123519"), 45319 * SECOND);
    EXPECT_EQ(nanosecondsOf("235959"), 86399 * SECOND);
    EXPECT_EQ(nanosecondsOf("123519.5"), 45319 * SECOND + 500'000'000);
    EXPECT_EQ(nanosecondsOf("123519.123456789"), 45319 * SECOND + 123'456'789);
    EXPECT_EQ(nanosecondsOf("123519.1234567899"), 45319 * SECOND + 123'456'789);
    EXPECT_EQ(nanosecondsOf("123519.000000001"), 45319 * SECOND + 1);
}

TEST(SentenceTest, ReadsLeapSeconds) {
    EXPECT_EQ(nanosecondsOf("235960"), 86400 * SECOND);
    EXPECT_EQ(nanosecondsOf("235960.5"), 86400 * SECOND + 500'000'000);
    EXPECT_EQ(digitsOf("235960.5"), "2359605");
    for (const char* const text : {"235961", "225960", "235860", "120060"}) {
        EXPECT_EQ(digitsOf(text), "none") << text;
    }
}

TEST(SentenceTest, RefusesWhatIsNoTimeOfDay) {
    for (const char* const text :
         {"",         ".",         "12351",      "1235190",  "123519.", "123519..",
          "123519.x", "123519.1x", "123519.1 ",  "123519,5", "240000",  "126000",
          "12351a",   " 123519",   "123519 ",    "-12351",   "+12351",  "1235.19",
          "12:35:19", "123519.-1", "123519.1.1", "999999"}) {
        EXPECT_EQ(digitsOf(text), "none") << text;
    }
}

TEST(SentenceTest, ComparesTimesAsNumbers) {
    for (const char* const text : {"123519", "123519.0", "123519.00", "123519.0000000000000000"}) {
        EXPECT_EQ(digitsOf(text), "123519") << text;
    }
    EXPECT_EQ(*TimeOfDay::parse("123519.50"), *TimeOfDay::parse("123519.5"));
    EXPECT_FALSE(*TimeOfDay::parse("123519.05") == *TimeOfDay::parse("123519.5"));
    // Too fine for the stamp, and different all the same.
    EXPECT_FALSE(*TimeOfDay::parse("123519.1234567891") == *TimeOfDay::parse("123519.123456789"));
    EXPECT_FALSE(*TimeOfDay::parse("235960") == *TimeOfDay::parse("000000"));
}

TEST(SentenceTest, KnowsTheTimedSentences) {
    for (const char* const type : {"RMC", "GGA", "GNS", "ZDA", "GST", "GBS"}) {
        for (const char* const talker : {"GP", "GN", "BD", "II", "QZ", "??"}) {
            const std::string address = std::string("$") + talker + type;
            EXPECT_EQ(timeDigits(address + ",123519.50,,,,,\r\n"), "1235195") << address;
        }
    }
    EXPECT_EQ(timeDigits("$GPGLL,4807.038,N,01131.000,E,123519,A*00"), "123519");
    EXPECT_EQ(timeDigits("$GPGLL,123519,N,01131.000,E,123520,A*00"), "123520");
}

TEST(SentenceTest, TimesNothingElse) {
    for (const char* const sentence : {"",
                                       "$",
                                       "$GPRMC",
                                       "$GPRMC*4B",
                                       "$GPRMC,,A",
                                       "$GPRMC,x,A",
                                       "$GPRMC*4B,123519",
                                       "!GPRMC,123519",
                                       "$PARMC,123519",
                                       "$PGRMC,123519",
                                       "$GPGSV,123519",
                                       "$GPRMCX,123519",
                                       "$GPGPRMC,123519",
                                       "$PRMC,123519",
                                       "$RMC,123519",
                                       "$GPrmc,123519",
                                       "$GPGLL,123519",
                                       "$G,RMC,123519",
                                       "$G*RMC,123519",
                                       "$GPRMC,240000,A",
                                       "GPRMC,123519",
                                       "$GPZDG,123519"}) {
        EXPECT_EQ(timeDigits(sentence), "none") << sentence;
    }
}

TEST(SentenceTest, TimesSentencesWithAWrongChecksum) {
    EXPECT_EQ(timeDigits("$GPGGA,123519,,*FF"), "123519");
    EXPECT_EQ(timeDigits("$GPGGA,123519*FF"), "123519");
}

TEST(SentenceTest, ReadsTheDateOfRMC) {
    EXPECT_EQ(dayOf(GNRMC), 19940323);
    EXPECT_EQ(dayOf(GPRMC), 19940323);
    EXPECT_EQ(dayOf(rmcOn("010180")), 19800101);
    EXPECT_EQ(dayOf(rmcOn("311299")), 19991231);
    EXPECT_EQ(dayOf(rmcOn("010100")), 20000101);
    EXPECT_EQ(dayOf(rmcOn("311279")), 20791231);
    EXPECT_EQ(dayOf(rmcOn("290200")), 20000229);
    EXPECT_EQ(dayOf(rmcOn("290224")), 20240229);
}

TEST(SentenceTest, RefusesWhatIsNoDateOfRMC) {
    for (const char* const date : {"", "290223", "300224", "310424", "000124", "010024", "011324",
                                   "320124", "23039", "2303944", "23039x", "-10394", " 10394"}) {
        EXPECT_EQ(dayOf(rmcOn(date)), 0) << date;
    }
}

TEST(SentenceTest, ReadsTheDateOfZDA) {
    EXPECT_EQ(dayOf(zdaOn("23,03,1994")), 19940323);
    EXPECT_EQ(dayOf(zdaOn("01,01,1970")), 19700101);
    EXPECT_EQ(dayOf(zdaOn("29,02,2096")), 20960229);
    EXPECT_EQ(dayOf(zdaOn("20,07,2554")), 25540720);
    EXPECT_EQ(dayOf(zdaOn("1,02,2024")), 20240201);
    EXPECT_EQ(dayOf(zdaOn("11,2,2024")), 20240211);
    EXPECT_EQ(dayOf(zdaOn("9,9,2024")), 20240909);
}

TEST(SentenceTest, RefusesWhatIsNoDateOfZDA) {
    for (const char* const date :
         {"", ",,", "31,12,1969", "29,02,2100", "31,04,2024", "00,01,2024", "01,00,2024",
          "01,13,2024", "0,01,2024", "01,0,2024", "001,1,2024", "1,001,2024", "01,01,24",
          "01,01,02024", "0x,01,2024", "01,0x,2024", "01,01,202x", "21,07,2554", "01,01,9999"}) {
        EXPECT_EQ(dayOf(zdaOn(date)), 0) << date;
    }
}

TEST(SentenceTest, ReadsDatesOfRMCAndZDAAlone) {
    EXPECT_EQ(dayOf("$GPGGA,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394"), 0);
    EXPECT_EQ(dayOf("$PPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394"), 0);
    EXPECT_EQ(dayOf("!GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394"), 0);
    EXPECT_EQ(dayOf("$IIRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394"), 19940323);
    EXPECT_EQ(dayOf("$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4*230394"), 0);
}

}  // namespace sentenceTest
