#include "tools/report/Moment.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <string>

#include "libvextrace/serialise.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace {

Moment::Texts textsOfMessage(const std::string& first, const std::string& second = "") {
    GPSTraceMessage message(258, first);
    if (!second.empty()) {
        message.addRecord(second);
    }
    return textsOf(serialise(message), fixOf(message).value());
}

const std::string RMC = "$GPRMC,123519,A,4807.0385,N,01131.000,W,022.4,084.4,230394,,,A*5B\r\n";
const std::string GGA = "$GPGGA,123519,4807.044,S,01131.009,E,1,08,0.9,545.4,M,46.9,M,,*58\r\n";

}  // namespace

TEST(MomentTest, HasTheTraceLineOfItsMessage) {
    const Moment::Texts texts = textsOfMessage(RMC, GGA);
    EXPECT_EQ(texts.shownLine(),
              "0000000000000102 00000000  GPS         | "
              "$GPGGA,123519,4807.044,S,01131.009,E,1,08,0.9,545.4,M,46.9,M,,*58 "
              "$GPRMC,123519,A,4807.0385,N,01131.000,W,022.4,084.4,230394,,,A*5B");
}

TEST(MomentTest, EscapesItsTraceLine) {
    const Moment::Texts texts = textsOfMessage("$GPRMC,\x1b[31m\xff,<\u2028");
    EXPECT_EQ(texts.shownLine(),
              "0000000000000102 00000000  GPS         | $GPRMC,\\x1b[31m\\xff,<\u2028");
}

TEST(MomentTest, CutsALongTraceLine) {
    const std::string sentence = fmt::format("$GPRMC,{}", std::string(Moment::LONGEST_LINE, 'x'));
    const Moment::Texts texts = textsOfMessage(sentence);
    const size_t front = std::string("0000000000000102 00000000  GPS         | ").size();
    EXPECT_EQ(texts.shownLine(), "0000000000000102 00000000  GPS         | " +
                                     sentence.substr(0, Moment::LONGEST_LINE - front) +
                                     " ... (48 bytes more)");
}

TEST(MomentTest, CutsATraceLineWhereItIsToldTo) {
    EXPECT_EQ(textsOfMessage(RMC).shownLine(50),
              "0000000000000102 00000000  GPS         | $GPRMC,12 ... (56 bytes more)");
}

// That of its fix, to the digit of the library's RDB text.
TEST(MomentTest, HasThePositionAsTheRdbTextWritesIt) {
    EXPECT_EQ(textsOfMessage(RMC, GGA).position, "48°7.038 N, 11°31.000 W");
    EXPECT_EQ(textsOfMessage(GGA).position, "48°7.044 S, 11°31.009 E");
}

TEST(MomentTest, HasAPositionWithoutSatellites) {
    const std::string none = "$GPGGA,123519,4807.044,S,01131.009,E,1,00,0.9,545.4,M,46.9,M,,";
    EXPECT_EQ(textsOfMessage(none).position, "48°7.044 S, 11°31.009 E");
}

TEST(MomentTest, HasNoPositionThatIsNotValid) {
    EXPECT_EQ(textsOfMessage("$GPRMC,123519,V,4807.038,N,01131.000,E,,,230394,,").position, "");
}

TEST(MomentTest, WritesPositionsOfAllHemispheres) {
    EXPECT_EQ(positionText(-0.5, -179.25), "0°30.000 S, 179°15.000 W");
    EXPECT_EQ(positionText(89.5, 0), "89°30.000 N, 0°0.000 E");
}
