#include "libvextrace/nmeaNumbers.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/doubleBits.h"

using Rmc = GPSTraceMessage::numeric_gprmc_t;
using Gga = GPSTraceMessage::numeric_gpgga_t;

namespace {

// Every member of it must be written.
Rmc rmcOf(std::string_view sentence) {
    Rmc numbers;
    numbers.timeUTC = numbers.dateUTC = 7;
    numbers.status = true;
    numbers.latitude = numbers.longitude = numbers.speed = numbers.course = 7;
    vextrace::readNumbers(sentence, numbers);
    return numbers;
}

Gga ggaOf(std::string_view sentence) {
    Gga numbers;
    numbers.timeUTC = 7;
    numbers.status = true;
    numbers.latitude = numbers.longitude = numbers.antennaAltitude = 7;
    numbers.numberSatellites = 7;
    vextrace::readNumbers(sentence, numbers);
    return numbers;
}

}  // namespace

TEST(nmeaNumbersTest, ReadsRMC) {
    const Rmc numbers =
        rmcOf("$GNRMC,123519.75,A,4807.038,S,01131.000,W,022.4,084.4,230394,003.1,W,A*6A");
    EXPECT_EQ(numbers.timeUTC, 123519U);
    EXPECT_TRUE(numbers.status);
    EXPECT_EQ(bitsOf(numbers.latitude), bitsOf(-(48 + (4807.038 - 4800) / 60)));
    EXPECT_EQ(bitsOf(numbers.longitude), bitsOf(-(11 + 31.0 / 60)));
    EXPECT_EQ(bitsOf(numbers.speed), bitsOf(22.4 * 1.852));
    EXPECT_EQ(bitsOf(numbers.course), bitsOf(84.4));
    EXPECT_EQ(numbers.dateUTC, 230394U);
}

TEST(nmeaNumbersTest, ReadsGGA) {
    const Gga numbers = ggaOf("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,-545.4,M,46.9,M,,*47");
    EXPECT_EQ(numbers.timeUTC, 123519U);
    EXPECT_TRUE(numbers.status);
    EXPECT_EQ(bitsOf(numbers.latitude), bitsOf(48 + (4807.038 - 4800) / 60));
    EXPECT_EQ(bitsOf(numbers.longitude), bitsOf(11 + 31.0 / 60));
    EXPECT_EQ(numbers.numberSatellites, 8);
    EXPECT_EQ(bitsOf(numbers.antennaAltitude), bitsOf(-545.4));
}

TEST(nmeaNumbersTest, MissingFieldsAreZeros) {
    for (const std::string_view sentence : {"", "$GPRMC,", "$GPRMC,,,,,,,,,,,,*4B\r\n"}) {
        const Rmc numbers = rmcOf(sentence);
        EXPECT_EQ(numbers.timeUTC, 0U);
        EXPECT_FALSE(numbers.status);
        EXPECT_EQ(bitsOf(numbers.latitude), bitsOf(0.0));
        EXPECT_EQ(bitsOf(numbers.longitude), bitsOf(0.0));
        EXPECT_EQ(bitsOf(numbers.speed), bitsOf(0.0));
        EXPECT_EQ(bitsOf(numbers.course), bitsOf(0.0));
        EXPECT_EQ(numbers.dateUTC, 0U);
    }
    for (const std::string_view sentence : {"", "$GPGGA,", "$GPGGA,,,,,,,,,,,,,,*56\r\n"}) {
        const Gga numbers = ggaOf(sentence);
        EXPECT_EQ(numbers.timeUTC, 0U);
        EXPECT_FALSE(numbers.status);
        EXPECT_EQ(bitsOf(numbers.latitude), bitsOf(0.0));
        EXPECT_EQ(bitsOf(numbers.longitude), bitsOf(0.0));
        EXPECT_EQ(numbers.numberSatellites, 0);
        EXPECT_EQ(bitsOf(numbers.antennaAltitude), bitsOf(0.0));
    }
}

TEST(nmeaNumbersTest, NumbersAreThoseOfAMessageThatHoldsTheSentence) {
    for (const std::string fields :
         {",123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W",
          ",1e3,Ab,-1.5,S,inf,W,0x1p4", ",99999999999,V,6553600.5,N,1.2.3,W,.5,5.,+7,,", "",
          ",,,,,,,,,", ",\xFF,\r,9,9,9,9,9,9,9",
          ",1,00000000000000000000.1,N,1,W,1,70000,1,123456789012345678,M"}) {
        const GPSTraceMessage message(0, "$GPRMC" + fields);
        Rmc held;
        ASSERT_TRUE(message.getGPRMC(held));
        const Rmc read = rmcOf("$GPRMC" + fields + "\n");
        EXPECT_EQ(read.timeUTC, held.timeUTC);
        EXPECT_EQ(read.status, held.status);
        EXPECT_EQ(bitsOf(read.latitude), bitsOf(held.latitude));
        EXPECT_EQ(bitsOf(read.longitude), bitsOf(held.longitude));
        EXPECT_EQ(bitsOf(read.speed), bitsOf(held.speed));
        EXPECT_EQ(bitsOf(read.course), bitsOf(held.course));
        EXPECT_EQ(read.dateUTC, held.dateUTC);
        const GPSTraceMessage other(0, "$GPGGA" + fields);
        Gga heldGga;
        ASSERT_TRUE(other.getGPGGA(heldGga));
        const Gga readGga = ggaOf("$GPGGA" + fields + "\n");
        EXPECT_EQ(readGga.timeUTC, heldGga.timeUTC);
        EXPECT_EQ(readGga.status, heldGga.status);
        EXPECT_EQ(bitsOf(readGga.latitude), bitsOf(heldGga.latitude));
        EXPECT_EQ(bitsOf(readGga.longitude), bitsOf(heldGga.longitude));
        EXPECT_EQ(readGga.numberSatellites, heldGga.numberSatellites);
        EXPECT_EQ(bitsOf(readGga.antennaAltitude), bitsOf(heldGga.antennaAltitude));
    }
}
