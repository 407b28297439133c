#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/doubleBits.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

using namespace std::string_literals;

namespace {

class OpenMessage : public GPSTraceMessage {
public:
    using GPSTraceMessage::GPSTraceMessage;

    using GPSTraceMessage::coordinateToDouble;
    using GPSTraceMessage::parseGGA;
    using GPSTraceMessage::parseRMC;
};

using NumericRMC = GPSTraceMessage::numeric_gprmc_t;
using NumericGGA = GPSTraceMessage::numeric_gpgga_t;

Texts withEmptyFieldsUpTo(size_t count, Texts texts) {
    texts.resize(count);
    return texts;
}

void expectRMC(const std::string& sentence, const Texts& firstFields) {
    OpenMessage message(1, sentence);
    const Texts fields = withEmptyFieldsUpTo(12, firstFields);
    EXPECT_EQ(fieldTexts(std::as_const(message).splitRMC()), fields)
        << testing::PrintToString(sentence);
    EXPECT_TRUE(message.parseRMC());
    EXPECT_EQ(fieldTexts(message.getRMC()), fields) << testing::PrintToString(sentence);
}

void expectGGA(const std::string& sentence, const Texts& firstFields) {
    OpenMessage message(1, sentence);
    const Texts fields = withEmptyFieldsUpTo(14, firstFields);
    EXPECT_EQ(fieldTexts(std::as_const(message).splitGGA()), fields)
        << testing::PrintToString(sentence);
    EXPECT_TRUE(message.parseGGA());
    EXPECT_EQ(fieldTexts(message.getGGA()), fields) << testing::PrintToString(sentence);
}

// Values that no sentence of these tests gives.
NumericRMC oldRMC() {
    NumericRMC numbers;
    numbers.timeUTC = 0x1122334455667788;
    numbers.status = true;
    numbers.latitude = -1.5;
    numbers.longitude = -2.5;
    numbers.speed = -3.5;
    numbers.course = -4.5;
    numbers.dateUTC = 0x99AABBCCDDEEFF00;
    return numbers;
}

NumericGGA oldGGA() {
    NumericGGA numbers;
    numbers.timeUTC = 0x1122334455667788;
    numbers.status = true;
    numbers.latitude = -1.5;
    numbers.longitude = -2.5;
    numbers.numberSatellites = 0xFEDC;
    numbers.antennaAltitude = -3.5;
    return numbers;
}

NumericRMC numbersOfRMC(const std::string& sentence) {
    NumericRMC numbers = oldRMC();
    EXPECT_TRUE(GPSTraceMessage(1, sentence).getGPRMC(numbers));
    return numbers;
}

NumericGGA numbersOfGGA(const std::string& sentence) {
    NumericGGA numbers = oldGGA();
    EXPECT_TRUE(GPSTraceMessage(1, sentence).getGPGGA(numbers));
    return numbers;
}

// All numbers, to the last bit.
auto exactly(const NumericRMC& n) {
    return std::make_tuple(n.timeUTC, n.status, bitsOf(n.latitude), bitsOf(n.longitude),
                           bitsOf(n.speed), bitsOf(n.course), n.dateUTC);
}

auto exactly(const NumericGGA& n) {
    return std::make_tuple(n.timeUTC, n.status, bitsOf(n.latitude), bitsOf(n.longitude),
                           n.numberSatellites, bitsOf(n.antennaAltitude));
}

template <class Numbers>
void expectEqual(const Numbers& a, const Numbers& b) {
    EXPECT_EQ(exactly(a), exactly(b));
}

NumericGGA zerosOfGGA(bool status) {
    NumericGGA numbers;
    numbers.status = status;
    return numbers;
}

// The fields of the sentences below with these as the last.
Texts rmcTexts(const std::string& direction, const std::string& mode) {
    return {"123519", "A",     "4807.038", "N",     "01131.000", "E",
            "022.4",  "084.4", "230394",   "003.1", direction,   mode};
}

Texts ggaTexts(const std::string& age, const std::string& reference) {
    return {"123519", "4807.038", "N", "01131.000", "E", "1", "08",
            "0.9",    "545.4",    "M", "46.9",      "M", age, reference};
}

const std::string RMC_FIELDS_1_TO_10 =
    "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1";
const std::string GGA_FIELDS_1_TO_12 =
    "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M";

// 48 + 7.038 / 60 and 11 + 31 / 60, rounded as the steps of the conversion round.
constexpr uint64_t LATITUDE_BITS = 0x40480F03AFB7E90F;
constexpr uint64_t LONGITUDE_BITS = 0x4027088888888889;
constexpr uint64_t SIGN_BIT = 0x8000000000000000;

}  // namespace

TEST(GPSTraceMessageNmeaTest, SplitsARecentRMC) {
    expectRMC(RMC_FIELDS_1_TO_10 + ",W,A*6A\n", rmcTexts("W", "A"));
}

TEST(GPSTraceMessageNmeaTest, SplitsAnOlderRMCWithTheRestAsDirection) {
    expectRMC(RMC_SENTENCE, rmcTexts("W*6A\n", ""));
    expectRMC(RMC_SENTENCE + "\r\n", rmcTexts("W*6A\r\n", ""));
}

TEST(GPSTraceMessageNmeaTest, SplitsAGGA) {
    expectGGA(GGA_SENTENCE, ggaTexts("", ""));
    expectGGA(GGA_FIELDS_1_TO_12 + ",5.0,0001*47", ggaTexts("5.0", "0001"));
}

TEST(GPSTraceMessageNmeaTest, FieldsHoldNoLineEndBehindTheChecksum) {
    expectRMC(RMC_FIELDS_1_TO_10 + ",W,A*6A\r\n", rmcTexts("W", "A"));
    expectGGA(GGA_SENTENCE + "\r\n", ggaTexts("", ""));
}

TEST(GPSTraceMessageNmeaTest, KeepsSurplusFieldsInTheLast) {
    expectRMC(RMC_FIELDS_1_TO_10 + ",W,A,V,,x*6A\n", rmcTexts("W", "A,V,,x"));
    expectGGA(GGA_FIELDS_1_TO_12 + ",,0000,EXTRA*47\n", ggaTexts("", "0000,EXTRA"));
}

TEST(GPSTraceMessageNmeaTest, KeepsTheLineEndInTheLastFieldWithoutChecksum) {
    expectRMC(RMC_FIELDS_1_TO_10 + ",W,A\r\n", rmcTexts("W", "A\r\n"));
    expectGGA(GGA_FIELDS_1_TO_12 + ",,0000\r\n", ggaTexts("", "0000\r\n"));
}

TEST(GPSTraceMessageNmeaTest, OnlyAStarInTheLastFieldEndsTheReading) {
    expectRMC(RMC_FIELDS_1_TO_10 + ",W*x,A*6A*6B\n", rmcTexts("W*x", "A"));
    expectGGA(GGA_FIELDS_1_TO_12 + ",5.0*x,0000*47*48\n", ggaTexts("5.0*x", "0000"));
}

TEST(GPSTraceMessageNmeaTest, GivesEmptyTextsForEmptyFields) {
    expectRMC("$GPRMC,,V,,,,,,,,,,N*53\r\n", {"", "V", "", "", "", "", "", "", "", "", "", "N"});
    expectGGA("$GPGGA,,,,,,0,00,99.99,,,,,,*48\r\n", {"", "", "", "", "", "0", "00", "99.99"});
}

TEST(GPSTraceMessageNmeaTest, GivesEmptyTextsForMissingFields) {
    expectRMC("$GPRMC,123519,A,4807", {"123519", "A", "4807\n"});
    expectRMC("$GPRMC,123519,A,", {"123519", "A", "\n"});
    expectGGA("$GPGGA,123519,4807", {"123519", "4807\n"});
    expectRMC("$GPRMC,\n", {"\n"});
    expectGGA("$GPGGA,\n", {"\n"});
}

TEST(GPSTraceMessageNmeaTest, GivesAnRMCWithoutCommaNoFields) {
    expectRMC("$GPRMC", {});
    expectRMC("$GPRMC*4B\r\n", {});
}

TEST(GPSTraceMessageNmeaTest, GivesAGGAWithoutCommaTheSentenceAsTime) {
    expectGGA("$GPGGA", {"$GPGGA\n"});
    expectGGA("$GPGGA*56\r\n", {"$GPGGA*56\r\n"});
}

TEST(GPSTraceMessageNmeaTest, TrimsAndChecksNothing) {
    expectRMC(
        "$GPRMC, 12 ,\tA,48\0"s
        "07,n,x\"y',\xC2\xB0,-1,+2,31.02.,0x1,w,?*ZZ\n",
        {" 12 ", "\tA",
         "48\0"s
         "07",
         "n", "x\"y'", "\xC2\xB0", "-1", "+2", "31.02.", "0x1", "w", "?"});
}

TEST(GPSTraceMessageNmeaTest, DoesNotLookAtTheCode) {
    expectRMC("$GNRMC,123519,A*6A\n", {"123519", "A*6A\n"});
    expectRMC("$GPRMCextra,123519,A*6A\n", {"123519", "A*6A\n"});
    expectGGA("$GLGGA,123519,4807.038\n", {"123519", "4807.038\n"});
    expectGGA("$GPGGAextra,123519,4807.038\n", {"123519", "4807.038\n"});
}

TEST(GPSTraceMessageNmeaTest, LeavesTheFieldsWithoutTheSentence) {
    OpenMessage rmc(1, RMC_SENTENCE);
    EXPECT_FALSE(rmc.parseGGA());
    EXPECT_EQ(fieldTexts(rmc.getGGA()), Texts(14));
    EXPECT_TRUE(rmc.parseRMC());

    OpenMessage gga(1, GGA_SENTENCE);
    EXPECT_FALSE(gga.parseRMC());
    EXPECT_EQ(fieldTexts(gga.getRMC()), Texts(12));
    EXPECT_TRUE(gga.parseGGA());

    OpenMessage neither;
    EXPECT_FALSE(neither.parseRMC());
    EXPECT_FALSE(neither.parseGGA());
}

TEST(GPSTraceMessageNmeaTest, SplitsAMessageThatMayNotChange) {
    const GPSTraceMessage rmc(1, RMC_SENTENCE);
    EXPECT_EQ(rmc.splitRMC().latitude, "4807.038");
    EXPECT_EQ(fieldTexts(rmc.splitGGA()), Texts(14));
    EXPECT_EQ(fieldTexts(rmc.getRMC()), Texts(12));

    const std::unique_ptr<const GPSTraceMessage> gga = rebuild(serialised(0, 1, GGA_SENTENCE));
    EXPECT_EQ(gga->splitGGA().antennaAltitude, "545.4");
    EXPECT_EQ(fieldTexts(gga->splitRMC()), Texts(12));
    EXPECT_EQ(fieldTexts(gga->getGGA()), Texts(14));
}

TEST(GPSTraceMessageNmeaTest, SplitsNoSentenceOfAnotherTalker) {
    OpenMessage message(1, "$PGRMC,123519,A\n");
    message.addRecord("$HCGGA,123519\n");
    message.addRecord("$gpgga,123519\n");
    EXPECT_FALSE(message.parseRMC());
    EXPECT_FALSE(message.parseGGA());
}

TEST(GPSTraceMessageNmeaTest, SplitsTheSameAgain) {
    OpenMessage message(1, RMC_SENTENCE);
    message.addRecord("$GPGGA");
    const Texts rmc = fieldTexts(message.getRMC());
    const Texts gga = fieldTexts(message.getGGA());
    EXPECT_TRUE(message.parseRMC());
    EXPECT_TRUE(message.parseGGA());
    EXPECT_EQ(fieldTexts(message.getRMC()), rmc);
    EXPECT_EQ(fieldTexts(message.getGGA()), gga);
    EXPECT_EQ(rmc[0], "123519");
    EXPECT_EQ(gga[0], "$GPGGA\n");
}

TEST(GPSTraceMessageNmeaTest, KeepsTheFieldsOfTheFirstSentence) {
    OpenMessage message(1, "$GPRMC,first,A*00\n");
    message.addRecord("$GPRMC,second,V,x,y*00\n");
    message.addRecord("$GPGGA,third*00\n");
    message.addRecord("$GPGGA,fourth,x,y*00\n");
    EXPECT_EQ(fieldTexts(message.getRMC()), withEmptyFieldsUpTo(12, {"first", "A*00\n"}));
    EXPECT_EQ(fieldTexts(message.getGGA()), withEmptyFieldsUpTo(14, {"third*00\n"}));
}

TEST(GPSTraceMessageNmeaTest, SplittingLeavesTheSentences) {
    OpenMessage message(1, RMC_SENTENCE);
    message.addRecord("$GPGGA");
    const std::string before = payloadOf(message);
    message.parseRMC();
    message.parseGGA();
    EXPECT_EQ(payloadOf(message), before);
}

TEST(GPSTraceMessageNmeaTest, ConvertsCoordinates) {
    const struct {
        std::string text;
        double degrees;
    } cases[] = {
        {"", 0},
        {"north", 0},
        {"12.5", 12.5 / 60},
        {"9000.0", 90},
        {"09000.0", 90},
        {"18000.0", 180},
        {"4860.0", 49},
        {"4890.0", 49.5},
        {" 4830", 48.5},
        {"-99.0", -99 / 60.0},
        {"6553600.0", 6553600 / 60.0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(bitsOf(OpenMessage::coordinateToDouble(c.text)), bitsOf(c.degrees)) << c.text;
    }
    EXPECT_NEAR(OpenMessage::coordinateToDouble("12.5"), 0.208333, 1e-6);
}

// On processors with extended precision these differ in their last bit.
TEST(GPSTraceMessageNmeaTest, WrapsNegativeDegrees) {
    EXPECT_NEAR(OpenMessage::coordinateToDouble("-4807.038"), -43738.78396, 1e-5);
    EXPECT_DOUBLE_EQ(OpenMessage::coordinateToDouble("-4807.038"),
                     65488 + (-4807.038 - 6548800) / 60);
    EXPECT_DOUBLE_EQ(OpenMessage::coordinateToDouble("-100"), 65535 - 6553600 / 60.0);
}

TEST(GPSTraceMessageNmeaTest, ConvertsCoordinatesToTheLastBit) {
    EXPECT_EQ(bitsOf(OpenMessage::coordinateToDouble("4807.038")), LATITUDE_BITS);
    EXPECT_EQ(bitsOf(OpenMessage::coordinateToDouble("4807.038abc")), LATITUDE_BITS);
    EXPECT_EQ(bitsOf(OpenMessage::coordinateToDouble("4807.038\0"s
                                                     "9")),
              LATITUDE_BITS);
    EXPECT_EQ(bitsOf(OpenMessage::coordinateToDouble("01131.000")), LONGITUDE_BITS);
}

TEST(GPSTraceMessageNmeaTest, GivesTheNumbersOfAnRMC) {
    const NumericRMC numbers = numbersOfRMC(RMC_SENTENCE);
    EXPECT_EQ(numbers.timeUTC, 123519U);
    EXPECT_TRUE(numbers.status);
    EXPECT_EQ(bitsOf(numbers.latitude), LATITUDE_BITS);
    EXPECT_EQ(bitsOf(numbers.longitude), LONGITUDE_BITS);
    EXPECT_EQ(bitsOf(numbers.speed), 0x4044BE0DED288CE7U);
    EXPECT_EQ(bitsOf(numbers.course), 0x405519999999999AU);
    EXPECT_EQ(numbers.dateUTC, 230394U);
    EXPECT_NEAR(numbers.latitude, 48.1173, 1e-9);
    EXPECT_NEAR(numbers.longitude, 11.516666667, 1e-9);
    EXPECT_NEAR(numbers.speed, 41.4848, 1e-9);
}

TEST(GPSTraceMessageNmeaTest, GivesTheNumbersOfAGGA) {
    const NumericGGA numbers = numbersOfGGA(GGA_SENTENCE);
    EXPECT_EQ(numbers.timeUTC, 123519U);
    EXPECT_TRUE(numbers.status);
    EXPECT_EQ(bitsOf(numbers.latitude), LATITUDE_BITS);
    EXPECT_EQ(bitsOf(numbers.longitude), LONGITUDE_BITS);
    EXPECT_EQ(numbers.numberSatellites, 8);
    EXPECT_EQ(bitsOf(numbers.antennaAltitude), bitsOf(545.4));
}

TEST(GPSTraceMessageNmeaTest, KnotsAreTimes1852) {
    EXPECT_EQ(bitsOf(numbersOfRMC("$GPRMC,,,,,,,1,").speed), 0x3FFDA1CAC083126FU);
    EXPECT_EQ(numbersOfRMC("$GPRMC,,,,,,,-1000,").speed, -1852.0);
}

TEST(GPSTraceMessageNmeaTest, SouthAndWestAreNegative) {
    const NumericRMC rmc = numbersOfRMC("$GPRMC,1,A,4807.038,S,01131.000,W,");
    EXPECT_EQ(bitsOf(rmc.latitude), LATITUDE_BITS | SIGN_BIT);
    EXPECT_EQ(bitsOf(rmc.longitude), LONGITUDE_BITS | SIGN_BIT);
    const NumericGGA gga = numbersOfGGA("$GPGGA,1,4807.038,S,01131.000,W,");
    EXPECT_EQ(bitsOf(gga.latitude), LATITUDE_BITS | SIGN_BIT);
    EXPECT_EQ(bitsOf(gga.longitude), LONGITUDE_BITS | SIGN_BIT);
}

TEST(GPSTraceMessageNmeaTest, OnlyTheFirstLetterOfTheHemisphereCounts) {
    const NumericRMC words = numbersOfRMC("$GPRMC,1,A,4807.038,South,01131.000,West,");
    EXPECT_EQ(bitsOf(words.latitude), LATITUDE_BITS | SIGN_BIT);
    EXPECT_EQ(bitsOf(words.longitude), LONGITUDE_BITS | SIGN_BIT);
}

TEST(GPSTraceMessageNmeaTest, NoOtherHemisphereIsNegative) {
    for (const std::string& end : {"s,01131.000,w,"s, "W,01131.000,S,"s, " S,01131.000, W,"s,
                                   ",01131.000,,"s, "N,01131.000,E,"s, "\0S,01131.000,\0W,"s}) {
        const NumericRMC rmc = numbersOfRMC("$GPRMC,1,A,4807.038," + end);
        EXPECT_EQ(bitsOf(rmc.latitude), LATITUDE_BITS) << end;
        EXPECT_EQ(bitsOf(rmc.longitude), LONGITUDE_BITS) << end;
        const NumericGGA gga = numbersOfGGA("$GPGGA,1,4807.038," + end);
        EXPECT_EQ(bitsOf(gga.latitude), LATITUDE_BITS) << end;
        EXPECT_EQ(bitsOf(gga.longitude), LONGITUDE_BITS) << end;
    }
}

TEST(GPSTraceMessageNmeaTest, ZeroInTheSouthOrWestIsNegativeZero) {
    const NumericRMC rmc = numbersOfRMC("$GPRMC,1,A,0000.000,S,,W,");
    EXPECT_EQ(bitsOf(rmc.latitude), SIGN_BIT);
    EXPECT_EQ(bitsOf(rmc.longitude), SIGN_BIT);
    const NumericGGA gga = numbersOfGGA("$GPGGA,1,0000.000,S,,W,");
    EXPECT_EQ(bitsOf(gga.latitude), SIGN_BIT);
    EXPECT_EQ(bitsOf(gga.longitude), SIGN_BIT);
    const NumericRMC positive = numbersOfRMC("$GPRMC,1,A,0000.000,N,,E,");
    EXPECT_EQ(bitsOf(positive.latitude), 0U);
    EXPECT_EQ(bitsOf(positive.longitude), 0U);
}

TEST(GPSTraceMessageNmeaTest, AStatusThatBeginsWithAIsValid) {
    for (const std::string& status : {"A"s, "Active"s, "A "s, "A\0"s}) {
        EXPECT_TRUE(numbersOfRMC("$GPRMC,1," + status + ",").status) << status;
    }
    for (const std::string& status : {"V"s, ""s, "a"s, " A"s, "VA"s, "\0A"s, "D"s}) {
        EXPECT_FALSE(numbersOfRMC("$GPRMC,1," + status + ",").status) << status;
    }
}

TEST(GPSTraceMessageNmeaTest, AGGAWithATimeIsValidWhateverItsQuality) {
    EXPECT_TRUE(numbersOfGGA("$GPGGA,123519,,,,,0,00,99.99,,,,,,*48").status);
    EXPECT_TRUE(numbersOfGGA("$GPGGA,x,").status);
    EXPECT_TRUE(numbersOfGGA("$GPGGA, ,").status);
    EXPECT_TRUE(numbersOfGGA("$GPGGA,\n").status);
    const NumericGGA noTime = numbersOfGGA("$GPGGA,,4807.038,N,01131.000,E,1,08,0.9,545.4,M*47");
    EXPECT_FALSE(noTime.status);
    EXPECT_EQ(noTime.timeUTC, 0U);
    EXPECT_EQ(bitsOf(noTime.latitude), LATITUDE_BITS);
    EXPECT_EQ(bitsOf(noTime.longitude), LONGITUDE_BITS);
    EXPECT_EQ(noTime.numberSatellites, 8);
    EXPECT_EQ(noTime.antennaAltitude, 545.4);
}

TEST(GPSTraceMessageNmeaTest, ATimeThatBeginsWithANulCountsAsEmpty) {
    const NumericGGA numbers = numbersOfGGA(
        "$GPGGA,\0"s
        "123519,4807.038,S,");
    EXPECT_FALSE(numbers.status);
    EXPECT_EQ(numbers.timeUTC, 0U);
    EXPECT_EQ(bitsOf(numbers.latitude), LATITUDE_BITS | SIGN_BIT);
    EXPECT_TRUE(numbersOfGGA("$GPGGA,1\0"s
                             "2,")
                    .status);
    EXPECT_EQ(numbersOfGGA("$GPGGA,1\0"s
                           "2,")
                  .timeUTC,
              1U);
}

TEST(GPSTraceMessageNmeaTest, ReadsTimeAndDateAsPlainIntegers) {
    const struct {
        std::string text;
        uint64_t value;
    } cases[] = {
        {"002153.000", 2153},
        {"123519.99", 123519},
        {"000000", 0},
        {"010203", 10203},
        {" 12", 12},
        {"+12", 12},
        {"12:35:19", 12},
        {"0x12", 0},
        {"noon", 0},
        {"-5", 0xFFFFFFFFFFFFFFFB},
        {"2147483647", 2147483647},
        {"99999999999999999999", static_cast<uint64_t>(std::numeric_limits<long>::max())},
        {"-99999999999999999999", static_cast<uint64_t>(std::numeric_limits<long>::min())},
    };
    for (const auto& c : cases) {
        const NumericRMC rmc = numbersOfRMC("$GPRMC," + c.text + ",A,,,,,,," + c.text + ",");
        EXPECT_EQ(rmc.timeUTC, c.value) << c.text;
        EXPECT_EQ(rmc.dateUTC, c.value) << c.text;
        EXPECT_EQ(numbersOfGGA("$GPGGA," + c.text + ",").timeUTC, c.value) << c.text;
    }
}

TEST(GPSTraceMessageNmeaTest, CutsTheSatellitesTo16Bits) {
    const struct {
        std::string text;
        uint16_t value;
    } cases[] = {{"70000", 4464}, {"65535", 65535}, {"65536", 0}, {"-1", 65535},
                 {"08", 8},       {"12.9", 12},     {"", 0},      {"many", 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(numbersOfGGA("$GPGGA,1,,,,,1," + c.text + ",").numberSatellites, c.value)
            << c.text;
    }
}

TEST(GPSTraceMessageNmeaTest, ReadsRealsFromTheFrontOfTheField) {
    const struct {
        std::string text;
        double value;
        double kmh;
    } cases[] = {
        {"084.4", 84.4, 84.4 * 1.852},
        {"-12.5M", -12.5, -12.5 * 1.852},
        {" 1.5", 1.5, 1.5 * 1.852},
        {"1e2", 100, 100 * 1.852},
        {".5", 0.5, 0.5 * 1.852},
        {"1.5.5", 1.5, 1.5 * 1.852},
        {"", 0, 0},
        {"none", 0, 0},
    };
    for (const auto& c : cases) {
        const NumericRMC rmc = numbersOfRMC("$GPRMC,,,,,,," + c.text + "," + c.text + ",");
        EXPECT_EQ(bitsOf(rmc.speed), bitsOf(c.kmh)) << c.text;
        EXPECT_EQ(bitsOf(rmc.course), bitsOf(c.value)) << c.text;
        const NumericGGA gga = numbersOfGGA("$GPGGA,,,,,,,,," + c.text + ",");
        EXPECT_EQ(bitsOf(gga.antennaAltitude), bitsOf(c.value)) << c.text;
    }
}

TEST(GPSTraceMessageNmeaTest, MissingFieldsAreZeros) {
    expectEqual(numbersOfRMC("$GPRMC"), NumericRMC());
    expectEqual(numbersOfRMC("$GPRMC,"), NumericRMC());
    expectEqual(numbersOfRMC("$GPRMC,,V,,,,,,,,,,N*53"), NumericRMC());
    expectEqual(numbersOfGGA("$GPGGA,,,,,,0,,,,,,,*56"), zerosOfGGA(false));

    NumericRMC timeOnly;
    timeOnly.timeUTC = 123519;
    expectEqual(numbersOfRMC("$GPRMC,123519"), timeOnly);
}

TEST(GPSTraceMessageNmeaTest, AGGAWithoutCommaTakesTheSentenceAsTime) {
    expectEqual(numbersOfGGA("$GPGGA"), zerosOfGGA(true));
    expectEqual(numbersOfGGA("$GPGGA*56\r\n"), zerosOfGGA(true));
}

TEST(GPSTraceMessageNmeaTest, ReadsNothingBehindTheLastNumber) {
    expectEqual(numbersOfRMC(RMC_FIELDS_1_TO_10 + ",W,A*6A\r\n"), numbersOfRMC(RMC_SENTENCE));
    expectEqual(numbersOfRMC(RMC_FIELDS_1_TO_10), numbersOfRMC(RMC_SENTENCE));
    expectEqual(numbersOfGGA("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4"),
                numbersOfGGA(GGA_SENTENCE));
}

TEST(GPSTraceMessageNmeaTest, IgnoresQualityAndDilution) {
    expectEqual(numbersOfGGA("$GPGGA,123519,4807.038,N,01131.000,E,0,08,99.99,545.4,M"),
                numbersOfGGA(GGA_SENTENCE));
    expectEqual(numbersOfGGA("$GPGGA,123519,4807.038,N,01131.000,E,,08,,545.4,M"),
                numbersOfGGA(GGA_SENTENCE));
}

TEST(GPSTraceMessageNmeaTest, LeavesTheNumbersWithoutTheSentence) {
    NumericRMC rmc = oldRMC();
    EXPECT_FALSE(GPSTraceMessage(1, GGA_SENTENCE).getGPRMC(rmc));
    EXPECT_FALSE(GPSTraceMessage().getGPRMC(rmc));
    expectEqual(rmc, oldRMC());

    NumericGGA gga = oldGGA();
    EXPECT_FALSE(GPSTraceMessage(1, RMC_SENTENCE).getGPGGA(gga));
    EXPECT_FALSE(GPSTraceMessage().getGPGGA(gga));
    expectEqual(gga, oldGGA());
}

TEST(GPSTraceMessageNmeaTest, GivesTheNumbersWithoutASplitAndChangesNothing) {
    const GPSTraceMessage rmc(1, RMC_SENTENCE);
    NumericRMC first;
    NumericRMC second = oldRMC();
    EXPECT_TRUE(rmc.getGPRMC(first));
    EXPECT_TRUE(rmc.getGPRMC(second));
    expectEqual(first, second);
    EXPECT_EQ(first.timeUTC, 123519U);
    EXPECT_EQ(fieldTexts(rmc.getRMC()), Texts(12));
    EXPECT_EQ(payloadOf(rmc), RMC_SENTENCE + "\n");

    const GPSTraceMessage gga(1, GGA_SENTENCE);
    NumericGGA third;
    EXPECT_TRUE(gga.getGPGGA(third));
    EXPECT_EQ(third.timeUTC, 123519U);
    EXPECT_EQ(fieldTexts(gga.getGGA()), Texts(14));
    EXPECT_EQ(payloadOf(gga), GGA_SENTENCE + "\n");
}

TEST(GPSTraceMessageNmeaTest, GivesTheSameNumbersBehindASplit) {
    GPSTraceMessage message(1, RMC_SENTENCE);
    message.addRecord(GGA_SENTENCE);
    NumericRMC rmc;
    NumericGGA gga;
    EXPECT_TRUE(message.getGPRMC(rmc));
    EXPECT_TRUE(message.getGPGGA(gga));
    expectEqual(rmc, numbersOfRMC(RMC_SENTENCE));
    expectEqual(gga, numbersOfGGA(GGA_SENTENCE));
}

TEST(GPSTraceMessageNmeaTest, NewNumbersAreZeros) {
    EXPECT_EQ(exactly(NumericRMC()), std::make_tuple(0U, false, 0U, 0U, 0U, 0U, 0U));
    EXPECT_EQ(exactly(NumericGGA()), std::make_tuple(0U, false, 0U, 0U, 0U, 0U));
}
