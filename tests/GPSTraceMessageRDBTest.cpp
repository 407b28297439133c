#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/GlobalCommaAndDots.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

using namespace std::string_literals;

namespace {

const std::string POSITION = "4807.038,N,01131.000,E";
const std::string POSITION_TEXT = "48°7.038 N, 11°31.000 E";

std::string rmcWith(const std::string& status, const std::string& position) {
    return "$GPRMC,123519," + status + "," + position + ",022.4,084.4,230394,003.1,W,A*6A\r\n";
}

std::string ggaWith(const std::string& satellites, const std::string& position,
                    const std::string& altitude) {
    return "$GPGGA,123519," + position + ",1," + satellites + ",0.9," + altitude +
           ",46.9,M,,*47\r\n";
}

// Both ways to the text give the same.
std::string formatted(GPSTraceMessage message) {
    std::string text = std::as_const(message).rdbText();
    EXPECT_EQ(message.formatForRDB(), text);
    EXPECT_EQ(std::as_const(message).rdbText(), text);
    return text;
}

std::string formatted(const std::string& sentence) {
    return formatted(GPSTraceMessage(1, sentence));
}

std::string formatted(const std::string& first, const std::string& second) {
    GPSTraceMessage message(1, first);
    message.addRecord(second);
    return formatted(message);
}

// The position of another place, so that the source of a text shows.
const std::string OTHER_RMC = rmcWith("A", "3356.111,S,15112.222,W");
const std::string OTHER_TEXT = "33°56.111 S, 151°12.222 W";

}  // namespace

TEST(GPSTraceMessageRDBTest, FormatsTheFixWithItsAltitude) {
    EXPECT_EQ(formatted(GGA_SENTENCE), "48°7.038 N, 11°31.000 E, 545.4M");
    EXPECT_EQ(formatted(GGA_SENTENCE),
              "48\xC2\xB0"
              "7.038 N, 11\xC2\xB0"
              "31.000 E, 545.4M");
}

TEST(GPSTraceMessageRDBTest, FormatsAnRMCPositionWithoutAltitude) {
    EXPECT_EQ(formatted(RMC_SENTENCE), POSITION_TEXT);
}

TEST(GPSTraceMessageRDBTest, PrefersTheGGAPosition) {
    const std::string gga = ggaWith("08", POSITION, "545.4,M");
    EXPECT_EQ(formatted(gga, OTHER_RMC), POSITION_TEXT + ", 545.4M");
    EXPECT_EQ(formatted(OTHER_RMC, gga), POSITION_TEXT + ", 545.4M");
    EXPECT_EQ(formatted(gga, rmcWith("V", "3356.111,S,15112.222,W")), POSITION_TEXT + ", 545.4M");
}

TEST(GPSTraceMessageRDBTest, AnySatellitesMakeTheGGAPositionCount) {
    for (const std::string& satellites :
         {"1"s, "08"s, "12abc"s, " 7"s, "-1"s, "+3"s, "1.5"s, "65536"s, "99999999999999999999"s}) {
        EXPECT_EQ(formatted(ggaWith(satellites, POSITION, "545.4,M"), OTHER_RMC),
                  POSITION_TEXT + ", 545.4M")
            << satellites;
    }
}

TEST(GPSTraceMessageRDBTest, FallsBackToTheRMCWithoutSatellites) {
    for (const std::string& satellites :
         {""s, "0"s, "00"s, "-0"s, "0.9"s, "many"s, "x1"s, " "s, "0x8"s,
          "\0"s
          "8"s}) {
        const std::string gga = ggaWith(satellites, POSITION, "545.4,M");
        EXPECT_EQ(formatted(gga, OTHER_RMC), OTHER_TEXT) << satellites;
        EXPECT_EQ(formatted(gga), "") << satellites;
    }
    EXPECT_EQ(formatted("$GPGGA", OTHER_RMC), OTHER_TEXT);
    EXPECT_EQ(formatted("$GPGGA,123519," + POSITION + ",1", OTHER_RMC), OTHER_TEXT);
}

TEST(GPSTraceMessageRDBTest, LooksAtNothingElseOfTheGGA) {
    EXPECT_EQ(formatted("$GPGGA,," + POSITION + ",0,08,,545.4,M,,,,*47"),
              POSITION_TEXT + ", 545.4M");
    EXPECT_EQ(formatted("$GPGGA,," + POSITION + ",,08"), POSITION_TEXT);
}

TEST(GPSTraceMessageRDBTest, TakesAnRMCOfStatusAAlone) {
    for (const std::string& status :
         {""s, "V"s, "a"s, "AA"s, "A "s, " A"s, "Active"s, "A\0"s, "D"s}) {
        EXPECT_EQ(formatted(rmcWith(status, POSITION)), "") << testing::PrintToString(status);
        EXPECT_EQ(formatted(ggaWith("0", POSITION, "545.4,M"), rmcWith(status, POSITION)), "")
            << testing::PrintToString(status);
    }
}

TEST(GPSTraceMessageRDBTest, GivesTheEmptyTextWithoutEitherSentence) {
    EXPECT_EQ(formatted(GPSTraceMessage()), "");
    EXPECT_EQ(formatted(""), "");
    EXPECT_EQ(formatted("$PGRME,15.0,M,45.0,M", "$HCHDG,101.1"), "");
    EXPECT_EQ(formatted("$GPRMC"), "");
}

TEST(GPSTraceMessageRDBTest, WritesTheAltitudeAsStored) {
    const struct {
        std::string altitude;
        std::string text;
    } cases[] = {
        {"545.4,M", ", 545.4M"},
        {"-0012.50,m", ", -0012.50m"},
        {",M", ""},
        {",", ""},
        {"545.4,", ", 545.4"},
        {" ,M", ",  M"},
        {"high,feet", ", highfeet"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(formatted(ggaWith("08", POSITION, c.altitude)), POSITION_TEXT + c.text)
            << c.altitude;
    }
}

TEST(GPSTraceMessageRDBTest, WritesDegreesMinutesAndHemisphere) {
    const struct {
        std::string position;
        std::string text;
    } cases[] = {
        {"4807.038,S,01131.000,W", "48°7.038 S, 11°31.000 W"},
        {"4859.9996,N,17959.9995,E", "48°60.000 N, 179°60.000 E"},
        {"4800.0004,N,00000.0,E", "48°0.000 N, 0°0.000 E"},
        {"4899.5,N,18000,E", "48°99.500 N, 180°0.000 E"},
        {"12.5,N,7,E", "0°12.500 N, 0°7.000 E"},
        {",,,", "0°0.000 , 0°0.000 "},
        {",N,,E", "0°0.000 N, 0°0.000 E"},
        {"4807.038,,01131.000,", "48°7.038 , 11°31.000 "},
        {"4807.038,north,01131.000, e ", "48°7.038 north, 11°31.000  e "},
        {"somewhere,N,else,E", "0°0.000 N, 0°0.000 E"},
        {"4807.038abc,N, 01131.5 ,E", "48°7.038 N, 11°31.500 E"},
        {"-4807.038,N,6553600.0,E", "65488°-6553607.038 N, 0°6553600.000 E"},
        {"-99.5,N,-100,E", "0°-99.500 N, 65535°-6553600.000 E"},
        {"6553599.25,N,6553700,E", "65535°99.250 N, 1°6553600.000 E"},
        {"inf,N,-inf,E", "0°inf N, 0°-inf E"},
        {"1e2,N,01131.000e0,E", "0°100.000 N, 11°31.000 E"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(formatted(rmcWith("A", c.position)), c.text) << c.position;
        EXPECT_EQ(formatted(ggaWith("08", c.position, "545.4,M")), c.text + ", 545.4M")
            << c.position;
    }
}

TEST(GPSTraceMessageRDBTest, RefreshesTheFields) {
    GPSTraceMessage gga(1, GGA_SENTENCE);
    EXPECT_EQ(gga.getGGA().timeUTC, "");
    gga.formatForRDB();
    EXPECT_EQ(fieldTexts(gga.getGGA()), (Texts{"123519", "4807.038", "N", "01131.000", "E", "1",
                                               "08", "0.9", "545.4", "M", "46.9", "M", "", ""}));
    EXPECT_EQ(fieldTexts(gga.getRMC()), Texts(12));

    GPSTraceMessage rmc(1, RMC_SENTENCE);
    EXPECT_EQ(rmc.getRMC().timeUTC, "");
    rmc.formatForRDB();
    EXPECT_EQ(fieldTexts(rmc.getRMC()), (Texts{"123519", "A", "4807.038", "N", "01131.000", "E",
                                               "022.4", "084.4", "230394", "003.1", "W*6A\n", ""}));
    EXPECT_EQ(fieldTexts(rmc.getGGA()), Texts(14));
}

TEST(GPSTraceMessageRDBTest, RefreshesTheFieldsOfASentenceThatIsNotUsed) {
    GPSTraceMessage gga(1, ggaWith("00", POSITION, "545.4,M"));
    EXPECT_EQ(gga.formatForRDB(), "");
    EXPECT_EQ(gga.getGGA().numberSatellites, "00");

    GPSTraceMessage rmc(1, rmcWith("V", POSITION));
    EXPECT_EQ(rmc.formatForRDB(), "");
    EXPECT_EQ(rmc.getRMC().status, "V");
}

TEST(GPSTraceMessageRDBTest, FormatsTheSentenceThatIsAskedForAlone) {
    GPSTraceMessage message(1, OTHER_RMC);
    EXPECT_EQ(message.rdbText(GPSTraceMessage::NMEA_DATA_GPGGA), "");
    message.addRecord(GGA_SENTENCE);
    EXPECT_EQ(message.rdbText(GPSTraceMessage::NMEA_DATA_GPRMC), OTHER_TEXT);
    EXPECT_EQ(message.rdbText(GPSTraceMessage::NMEA_DATA_GPGGA), POSITION_TEXT + ", 545.4M");
    EXPECT_EQ(message.rdbText(static_cast<GPSTraceMessage::nmeaDataType_t>(2)), "");

    const GPSTraceMessage invalid(1, rmcWith("V", POSITION));
    EXPECT_EQ(invalid.rdbText(GPSTraceMessage::NMEA_DATA_GPRMC), "");
}

TEST(GPSTraceMessageRDBTest, LeavesAMessageThatMayNotChange) {
    const GPSTraceMessage gga(1, GGA_SENTENCE);
    EXPECT_EQ(gga.rdbText(), "48°7.038 N, 11°31.000 E, 545.4M");
    EXPECT_EQ(fieldTexts(gga.getGGA()), Texts(14));

    const GPSTraceMessage rmc(1, RMC_SENTENCE);
    EXPECT_EQ(rmc.rdbText(), POSITION_TEXT);
    EXPECT_EQ(fieldTexts(rmc.getRMC()), Texts(12));
    EXPECT_EQ(payloadOf(rmc), RMC_SENTENCE + "\n");
}

TEST(GPSTraceMessageRDBTest, FormatsTheSameAgainAndLeavesTheSentences) {
    GPSTraceMessage message(1, OTHER_RMC);
    message.addRecord(GGA_SENTENCE);
    const std::string sentences = payloadOf(message);
    const std::string text = message.formatForRDB();
    EXPECT_EQ(message.formatForRDB(), text);
    EXPECT_EQ(payloadOf(message), sentences);
}

TEST(GPSTraceMessageRDBTest, WritesNumbersInTheGlobalLocaleOfTheCall) {
    GPSTraceMessage message(1, ggaWith("08", "-4807.038,N,01131.000,E", "1545.4,M"));
    {
        const GlobalCommaAndDots locale;
        EXPECT_EQ(message.formatForRDB(), "65.488°-6.553.607,038 N, 11°31,000 E, 1545.4M");
        EXPECT_EQ(message.rdbText(), "65.488°-6.553.607,038 N, 11°31,000 E, 1545.4M");
        EXPECT_EQ(formatted(RMC_SENTENCE), "48°7,038 N, 11°31,000 E");
    }
    EXPECT_EQ(message.formatForRDB(), "65488°-6553607.038 N, 11°31.000 E, 1545.4M");
}
