#include <gtest/gtest.h>

#include <string>

#include "libvexstream/Fix.h"

using namespace vextrace;

namespace {

constexpr timeStamp_t STAMP = 0x0A9BC98150068601;

const std::string RMC = "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*62\r\n";
const std::string GGA = "$GNGGA,123519,3854.51,S,07726.45,W,2,08,0.9,545.4,M,46.9,M,,*5C\r\n";

// The sentence with a checksum that is that of no talker.
std::string wrong(std::string sentence) {
    sentence.replace(sentence.find('*'), 3, "*FF");
    return sentence;
}

}  // namespace

// A receiver that sends more than one RMC or GGA in an epoch.
TEST(FixReaderTest, TellsRepetitionsOfAFix) {
    FixReader reader;
    GPSTraceMessage both(STAMP, RMC);
    both.addRecord(GGA);
    EXPECT_FALSE(reader.read(both)->repeats);
    EXPECT_TRUE(reader.read(GPSTraceMessage(STAMP, GGA))->repeats);
    EXPECT_TRUE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
    EXPECT_TRUE(reader.read(both)->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, "$GPGSV,1,1,00*79")));
    EXPECT_TRUE(reader.read(GPSTraceMessage(STAMP, GGA))->repeats);
}

TEST(FixReaderTest, TakesAFixOfAnotherTimeForAnother) {
    FixReader reader;
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 1, RMC))->repeats);
    // A coarse clock.
    const std::string later = "$GPRMC,123519.1,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A";
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 1, later))->repeats);
    const std::string same = "$GPRMC,123519.100,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A";
    EXPECT_TRUE(reader.read(GPSTraceMessage(STAMP + 1, same))->repeats);
    const std::string untimed = "$GPRMC,,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A";
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 2, untimed))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 2, untimed))->repeats);
}

TEST(FixReaderTest, TakesWhatBringsASentenceOrIsBetterForAnother) {
    FixReader reader;
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, GGA))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 9, GGA))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 9, RMC))->repeats);
    const std::string invalid = "$GPRMC,123519,V,,,,,,,230394,,,N";
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 1, invalid))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 1, RMC))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 2, wrong(RMC)))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 2, RMC))->repeats);
}

TEST(FixReaderTest, AFixOfNothingIsNeitherARepetitionNorRepeated) {
    FixReader reader;
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, wrong(RMC)))->repeats);
    EXPECT_TRUE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
}

TEST(FixReaderTest, WhatBringsASentenceThatWasWrongRepeatsNone) {
    GPSTraceMessage both(STAMP, RMC);
    both.addRecord(wrong(GGA));
    FixReader reader;
    EXPECT_FALSE(reader.read(both)->repeats);
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, GGA))->repeats);
    FixReader all(FixSource::ALL);
    EXPECT_FALSE(all.read(GPSTraceMessage(STAMP, wrong(RMC)))->repeats);
    EXPECT_FALSE(all.read(GPSTraceMessage(STAMP, RMC))->repeats);
    EXPECT_TRUE(all.read(GPSTraceMessage(STAMP, wrong(RMC)))->repeats);
}

TEST(FixReaderTest, LetsTheTalkerGoOn) {
    std::string other = makeSentence("GLRMC,123519,A,4807.038,N,01131.000,E,,,230394,,,A");
    other[2] = 'P';
    EXPECT_EQ(fixOf(GPSTraceMessage(STAMP, other))->checksum(), Checksum::RIGHT);
    FixReader reader;
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, RMC))->isDoubtful());
    EXPECT_TRUE(reader.read(GPSTraceMessage(STAMP + 1, other))->isDoubtful());
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 2, other))->isDoubtful());
    reader.endTrace();
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP + 3, RMC))->isDoubtful());
}

TEST(FixReaderTest, BeginsAnewWithATrace) {
    FixReader reader;
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
    reader.endTrace();
    EXPECT_FALSE(reader.read(GPSTraceMessage(STAMP, RMC))->repeats);
}
