#include "libvexstream/Fix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>

using namespace vextrace;

namespace fixTest {
namespace {

constexpr timeStamp_t STAMP = 0x0A9BC98150068601;

std::optional<Fix> fixOfSentences(const std::string& first, const std::string& second = "") {
    GPSTraceMessage message(STAMP, first);
    if (!second.empty()) {
        message.addRecord(second);
    }
    return fixOf(message);
}

// An RMC sentence with this status and position, without a checksum.
Fix rmcFix(const std::string& statusAndPosition) {
    return *fixOfSentences("$GPRMC,123519," + statusAndPosition + ",,,230394,,\r\n");
}

// A GGA sentence that is sound but for the fields from the quality on.
Fix ggaFix(const std::string& fromQualityOn) {
    return *fixOfSentences("$GPGGA,123519,4807.038,N,01131.000,E," + fromQualityOn + "\r\n");
}

// An RMC sentence with this speed and course.
Fix moving(const std::string& speed, const std::string& course) {
    return *fixOfSentences("$GPRMC,123519,A,4807.038,N,01131.000,E," + speed + "," + course +
                           ",230394,,\r\n");
}

// A GGA sentence with this altitude.
Fix high(const std::string& altitude) {
    return ggaFix("1,08,0.9," + altitude + ",M,,,,");
}

const std::string RMC = "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*62\r\n";
const std::string GGA = "$GNGGA,123519,3854.51,S,07726.45,W,2,08,0.9,545.4,M,46.9,M,,*5C\r\n";

// The sentence with a checksum that is that of no talker.
std::string wrong(std::string sentence) {
    sentence.replace(sentence.find('*'), 3, "*FF");
    return sentence;
}

}  // namespace

TEST(FixTest, NeedsRmcOrGga) {
    EXPECT_FALSE(fixOf(GPSTraceMessage()));
    EXPECT_FALSE(fixOfSentences("$GPGLL,4807.038,N,01131.000,E,123519,A\r\n", "$GPGSV,1,1,00*79"));
}

TEST(FixTest, ReadsRmcAndGga) {
    const std::optional<Fix> fix = fixOfSentences(RMC, GGA);
    ASSERT_TRUE(fix);
    EXPECT_EQ(fix->stamp, STAMP);
    EXPECT_TRUE(fix->valid);
    EXPECT_EQ(fix->latitude, 48 + 7.037999999999556 / 60);
    EXPECT_EQ(fix->longitude, 11 + 31.0 / 60);
    EXPECT_EQ(fix->altitude, 545.4);
    EXPECT_EQ(fix->speed, 22.4 * 1.852);
    EXPECT_EQ(fix->course, 84.4);
    EXPECT_EQ(fix->satellites, 8U);
    EXPECT_EQ(fix->quality, 2U);
    EXPECT_EQ(fix->hdop, 0.9);
    EXPECT_EQ(fix->rmcChecksum, Checksum::RIGHT);
    EXPECT_EQ(fix->ggaChecksum, Checksum::RIGHT);
}

TEST(FixTest, ReadsRmcAlone) {
    const std::optional<Fix> fix = fixOfSentences(RMC);
    ASSERT_TRUE(fix);
    EXPECT_TRUE(fix->valid);
    EXPECT_EQ(fix->longitude, 11 + 31.0 / 60);
    EXPECT_FALSE(fix->altitude || fix->satellites || fix->quality || fix->hdop);
    EXPECT_EQ(fix->ggaChecksum, std::nullopt);
}

TEST(FixTest, TakesThePositionOfGgaWithoutRmc) {
    const std::optional<Fix> fix = fixOfSentences(GGA);
    ASSERT_TRUE(fix);
    EXPECT_TRUE(fix->valid);
    EXPECT_EQ(fix->latitude, -(38 + 54.51000000000022 / 60));
    EXPECT_EQ(fix->longitude, -(77 + 26.449999999999818 / 60));
    EXPECT_FALSE(fix->speed || fix->course);
    EXPECT_EQ(fix->rmcChecksum, std::nullopt);
}

TEST(FixTest, DoesNotTakeThePositionOfGgaBesideAnRmcThatHasNone) {
    const std::optional<Fix> fix = fixOfSentences("$GPRMC,123519,V,,,,,,,230394,,\r\n", GGA);
    ASSERT_TRUE(fix);
    EXPECT_FALSE(fix->valid || fix->latitude || fix->longitude);
    EXPECT_EQ(fix->altitude, 545.4);
}

TEST(FixTest, IsValidWhenTheStatusOfRmcBeginsWithA) {
    const std::string position = ",4807.038,N,01131.000,E";
    EXPECT_TRUE(rmcFix("A" + position).valid);
    EXPECT_TRUE(rmcFix("Active" + position).valid);
    for (const std::string status : {"V", "", "a", "N", " A"}) {
        EXPECT_FALSE(rmcFix(status + position).valid) << status;
        EXPECT_TRUE(rmcFix(status + position).latitude) << status;
    }
}

TEST(FixTest, IsValidWhenTheQualityOfGgaIsNotZero) {
    for (const std::string quality : {"1", "2", "6", "8", "10"}) {
        EXPECT_TRUE(ggaFix(quality + ",08,0.9,545.4,M,,,,").valid) << quality;
    }
    for (const std::string quality : {"0", "00", "", "A", "-1", "1.5", "99999999999"}) {
        EXPECT_FALSE(ggaFix(quality + ",08,0.9,545.4,M,,,,").valid) << quality;
    }
}

TEST(FixTest, TheStatusOfRmcDecidesWhereThereAreBoth) {
    const std::string invalidGga = "$GPGGA,123519,,,,,0,00,,,M,,M,,\r\n";
    EXPECT_TRUE(fixOfSentences(RMC, invalidGga)->valid);
    const std::string invalidRmc = "$GPRMC,123519,V,4807.038,N,01131.000,E,,,230394,,\r\n";
    EXPECT_FALSE(fixOfSentences(invalidRmc, GGA)->valid);
}

TEST(FixTest, TakesPositionsInRange) {
    for (const std::string position : {"9000.000,N,18000.000,E", "0000.000,S,00000.000,W",
                                       "0,N,0,E", "4860.000,N,01160.00,E", "5.,N,.5,E"}) {
        EXPECT_TRUE(rmcFix("A," + position).valid) << position;
    }
    EXPECT_EQ(rmcFix("A,9000.000,S,18000.000,W").latitude, -90.0);
    EXPECT_EQ(rmcFix("A,9000.000,S,18000.000,W").longitude, -180.0);
    EXPECT_EQ(rmcFix("A,4860.000,N,01160.00,E").latitude, 49.0);
}

TEST(FixTest, TakesNoPositionThatMakesNoSense) {
    for (const std::string position : {"9000.001,N,01131.000,E",
                                       "4807.038,N,18000.001,W",
                                       "9100.000,N,01131.000,E",
                                       "nan,N,01131.000,E",
                                       "4807.038,N,inf,E",
                                       "4807.038,N,1e2,E",
                                       ",N,01131.000,E",
                                       "4807.038,N,,E",
                                       "4807.038,,01131.000,E",
                                       "4807.038,N,01131.000,",
                                       "4807.038,n,01131.000,E",
                                       "4807.038,NN,01131.000,E",
                                       "4807.038,E,01131.000,N",
                                       "-4807.038,N,01131.000,E",
                                       "+4807.038,N,01131.000,E",
                                       "48 07.038,N,01131.000,E",
                                       "4807.0.38,N,01131.000,E",
                                       "0x10,N,01131.000,E",
                                       ".,N,.,E",
                                       "4860.001,N,01131.000,E",
                                       "4861.000,N,01131.000,E",
                                       "4807.038,N,01199.000,E",
                                       "99999999999999999994807.038,N,01131.000,E",
                                       "655364807.038,N,01131.000,E",
                                       "4807.038,N"}) {
        const Fix fix = rmcFix("A," + position);
        EXPECT_FALSE(fix.valid || fix.latitude || fix.longitude) << position;
    }
}

TEST(FixTest, FieldsEndAtTheChecksum) {
    const std::optional<Fix> fix =
        fixOfSentences("$GPRMC,123519,A,4807.038,N,01131.000*00,E,5,6\r\n");
    ASSERT_TRUE(fix);
    EXPECT_FALSE(fix->valid || fix->longitude || fix->speed);
}

TEST(FixTest, ReadsASentenceThatWasCutOff) {
    const std::string whole = GGA.substr(0, GGA.find('*'));
    for (size_t length = 6; length <= whole.size(); ++length) {
        const std::optional<Fix> fix = fixOfSentences(whole.substr(0, length));
        ASSERT_TRUE(fix) << length;
        EXPECT_EQ(fix->valid, length >= whole.find(",08,") && length > whole.find("W,")) << length;
    }
    EXPECT_EQ(fixOfSentences(whole.substr(0, whole.find(",M,")))->altitude, 545.4);
}

TEST(FixTest, MissingValuesAreNotZero) {
    const Fix fix = *fixOfSentences("$GPRMC,,,,,,,,,,,\r\n", "$GPGGA,,,,,,,,,,,,,,\r\n");
    EXPECT_FALSE(fix.valid || fix.latitude || fix.longitude || fix.altitude || fix.speed ||
                 fix.course || fix.satellites || fix.quality || fix.hdop);
}

TEST(FixTest, TakesSpeedsAndCoursesInRange) {
    EXPECT_EQ(moving("0", "0").speed, 0.0);
    EXPECT_EQ(moving("0", "0").course, 0.0);
    EXPECT_EQ(moving("000.5", "360.0").speed, 0.5 * 1.852);
    EXPECT_EQ(moving("000.5", "360.0").course, 360.0);
    EXPECT_EQ(moving("539956", "0").speed, 539956 * 1.852);
    for (const std::string text :
         {"-1", "nan", "inf", "1e1", "1 ", "360.1x", "0x1", ".", "999999"}) {
        EXPECT_EQ(moving(text, text).speed, std::nullopt) << text;
        EXPECT_EQ(moving(text, text).course, std::nullopt) << text;
    }
    EXPECT_EQ(moving("1", "360.01").course, std::nullopt);
    EXPECT_EQ(moving(std::string(400, '9'), "1").speed, std::nullopt);
}

TEST(FixTest, TakesAltitudesInMetres) {
    EXPECT_EQ(ggaFix("1,08,0.9,545.4,M,,,,").altitude, 545.4);
    EXPECT_EQ(ggaFix("1,08,0.9,-3.25,,,,,").altitude, -3.25);
    EXPECT_EQ(ggaFix("1,08,0.9,0,M,,,,").altitude, 0.0);
    EXPECT_EQ(ggaFix("1,08,0.9,545.4,F,,,,").altitude, std::nullopt);
    EXPECT_EQ(ggaFix("1,08,0.9,545.4,m,,,,").altitude, std::nullopt);
    EXPECT_EQ(high("-100000000").altitude, -1e8);
    for (const std::string text :
         {"", "nan", "inf", "-inf", "1e999", "--3", "-", "12a", "100000001", "-100000001"}) {
        EXPECT_EQ(high(text).altitude, std::nullopt) << text;
    }
    EXPECT_EQ(high(std::string(400, '9')).altitude, std::nullopt);
}

TEST(FixTest, TakesCountsAndDilutionsInRange) {
    EXPECT_EQ(ggaFix("1,00,0.0,,M,,,,").satellites, 0U);
    EXPECT_EQ(ggaFix("1,00,0.0,,M,,,,").hdop, 0.0);
    EXPECT_EQ(ggaFix("1,999,1000000,,M,,,,").satellites, 999U);
    EXPECT_EQ(ggaFix("1,999,1000000,,M,,,,").hdop, 1e6);
    for (const std::string text :
         {"", "-1", "x", "1x", "1e1", "inf", "nan", "+1", "1000001", "99999999999"}) {
        const Fix fix = ggaFix(std::string(text) + "," + text + "," + text + ",545.4,M,,,,");
        EXPECT_EQ(fix.quality, std::nullopt) << text;
        EXPECT_EQ(fix.satellites, std::nullopt) << text;
        EXPECT_EQ(fix.hdop, std::nullopt) << text;
    }
    EXPECT_EQ(ggaFix("1,1000,1,,M,,,,").satellites, std::nullopt);
}

TEST(FixTest, NeedsAPositionToBeValid) {
    const Fix fix = *fixOfSentences("$GPGGA,123519,,,,,1,08,0.9,545.4,M,46.9,M,,\r\n");
    EXPECT_FALSE(fix.valid || fix.latitude || fix.longitude);
    EXPECT_EQ(fix.quality, 1U);
}

TEST(FixTest, IsMadeOfGgaWhereRmcIsWrong) {
    const Fix fix = *fixOfSentences(wrong(RMC), GGA);
    EXPECT_TRUE(fix.valid);
    EXPECT_EQ(fix.latitude, -(38 + 54.51000000000022 / 60));
    EXPECT_EQ(fix.altitude, 545.4);
    EXPECT_EQ(fix.satellites, 8U);
    EXPECT_FALSE(fix.speed || fix.course || fix.usesRmc);
    EXPECT_EQ(fix.rmcChecksum, Checksum::WRONG);
    EXPECT_EQ(fix.checksum(), Checksum::RIGHT);
}

TEST(FixTest, IsMadeOfRmcWhereGgaIsWrong) {
    const Fix fix = *fixOfSentences(RMC, wrong(GGA));
    EXPECT_TRUE(fix.valid);
    EXPECT_EQ(fix.longitude, 11 + 31.0 / 60);
    EXPECT_EQ(fix.speed, 22.4 * 1.852);
    EXPECT_FALSE(fix.altitude || fix.satellites || fix.quality || fix.hdop || fix.usesGga);
    EXPECT_EQ(fix.ggaChecksum, Checksum::WRONG);
    EXPECT_EQ(fix.checksum(), Checksum::RIGHT);
}

TEST(FixTest, IsMadeOfNothingWhereAllIsWrong) {
    for (const Fix& fix : {*fixOfSentences(wrong(RMC), wrong(GGA)), *fixOfSentences(wrong(RMC)),
                           *fixOfSentences(wrong(GGA))}) {
        EXPECT_FALSE(fix.valid || fix.latitude || fix.speed || fix.course || fix.altitude ||
                     fix.satellites || fix.quality || fix.hdop || fix.usesRmc || fix.usesGga);
        EXPECT_TRUE(fix.isDoubtful());
    }
}

TEST(FixTest, IsMadeOfAllWhereThatIsAskedFor) {
    GPSTraceMessage message(STAMP, wrong(RMC));
    message.addRecord(wrong(GGA));
    const Fix fix = *fixOf(message, FixSource::ALL);
    EXPECT_EQ(fix.longitude, 11 + 31.0 / 60);
    EXPECT_EQ(fix.altitude, 545.4);
    EXPECT_TRUE(fix.isDoubtful());
}

TEST(FixTest, HasTheChecksumOfWhatItIsMadeOf) {
    const std::string unsummed = "$GPGGA,123519,3854.51,S,07726.45,W,2,08,0.9,545.4,M,46.9,M,,\r\n";
    EXPECT_EQ(fixOfSentences(RMC, GGA)->checksum(), Checksum::RIGHT);
    EXPECT_EQ(fixOfSentences(RMC, unsummed)->checksum(), Checksum::NONE);
    EXPECT_EQ(fixOfSentences(RMC, unsummed)->ggaChecksum, Checksum::NONE);
    EXPECT_EQ(fixOfSentences(wrong(RMC), unsummed)->checksum(), Checksum::NONE);
    EXPECT_EQ(fixOfSentences(unsummed)->checksum(), Checksum::NONE);
    EXPECT_EQ(fixOfSentences(unsummed)->altitude, 545.4);
    GPSTraceMessage message(STAMP, wrong(RMC));
    message.addRecord(unsummed);
    EXPECT_EQ(fixOf(message, FixSource::ALL)->checksum(), Checksum::WRONG);
}

TEST(FixTest, HasTheNumbersOfTheLibraryBitForBit) {
    std::mt19937_64 random(5);
    const auto digits = [&](size_t most) {
        std::string text(random() % (most + 1), '0');
        std::generate(text.begin(), text.end(),
                      [&] { return static_cast<char>('0' + random() % 10); });
        return text;
    };
    for (int i = 0; i < 20'000; ++i) {
        const std::string latitude = "48" + std::to_string(10 + random() % 50) + "." + digits(14);
        const std::string longitude = "111" + std::to_string(10 + random() % 50) + "." + digits(14);
        const std::string position = latitude + ",S," + longitude + ",W,";
        GPSTraceMessage rmc(STAMP, "$GPRMC,123519,A," + position + "1" + digits(4) + "." +
                                       digits(9) + ",1" + digits(1) + "." + digits(17) +
                                       ",230394,,\r\n");
        GPSTraceMessage gga(STAMP, "$GPGGA,123519," + position + "1,08,0.9,-1" + digits(5) + "." +
                                       digits(9) + ",M,,,,\r\n");
        GPSTraceMessage::numeric_gprmc_t ofRmc;
        GPSTraceMessage::numeric_gpgga_t ofGga;
        ASSERT_TRUE(rmc.getGPRMC(ofRmc) && gga.getGPGGA(ofGga));
        const Fix moving = *fixOf(rmc);
        EXPECT_EQ(moving.latitude, ofRmc.latitude);
        EXPECT_EQ(moving.longitude, ofRmc.longitude);
        EXPECT_EQ(moving.speed, ofRmc.speed);
        EXPECT_EQ(moving.course, ofRmc.course);
        const Fix high = *fixOf(gga);
        EXPECT_EQ(high.latitude, ofGga.latitude);
        EXPECT_EQ(high.longitude, ofGga.longitude);
        EXPECT_EQ(high.altitude, ofGga.antennaAltitude);
    }
}

}  // namespace fixTest
