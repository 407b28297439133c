#include "libvexstream/internal/soundness.h"

#include <gtest/gtest.h>

#include <string>

using namespace vextrace;

namespace {

bool canonical(const std::string& payload) {
    return isCanonical({reinterpret_cast<const uint8_t*>(payload.data()), payload.size()});
}

bool mayBe(int size, int id) {
    const uint8_t front[] = {static_cast<uint8_t>(size >> 8), static_cast<uint8_t>(size),
                             static_cast<uint8_t>(id >> 8), static_cast<uint8_t>(id)};
    return mayBeHeader(front);
}

}  // namespace

TEST(SoundnessTest, WhatTheLibraryWritesIsCanonical) {
    for (const char* payload :
         {"$GPRMC,1\n", "$GPGGA,1\r\n$GPRMC,1\n", "!AIVDM\n$GPGGA\n", "$G\n$P\n$PX\n", "x\n",
          "$GPGSV,\xFF\x01\r\r\n", "$GPRMC\n$GPRMD\n"}) {
        EXPECT_TRUE(canonical(payload)) << payload;
    }
}

TEST(SoundnessTest, EverythingElseIsNot) {
    for (const std::string& payload :
         {std::string(), std::string("\n"), std::string("$GPRMC,1"), std::string("\n$GPRMC,1\n"),
          std::string("$GPRMC,1\n\n"), std::string("$GPRMC,1\n$GPGGA,1\n"),
          std::string("$GPRMC,1\n$GPRMC,2\n"), std::string("$GPRMC\0\n", 8),
          std::string("$GPGGA,1\n$GPRMC,1")}) {
        EXPECT_FALSE(canonical(payload)) << payload;
    }
}

TEST(SoundnessTest, AHeaderCoversItselfAndHasAnExpectedType) {
    EXPECT_TRUE(mayBe(12, 22));
    EXPECT_TRUE(mayBe(65535, 0));
    EXPECT_TRUE(mayBe(0x1234, 0xC123));
    EXPECT_FALSE(mayBe(11, 22));
    EXPECT_FALSE(mayBe(0, 0));
    EXPECT_FALSE(mayBe(100, 0x4711));
    EXPECT_FALSE(mayBe(100, 0xFFFF));
}

TEST(SoundnessTest, ReadsTheFieldsOfAHeader) {
    const uint8_t header[] = {0x12, 0x34, 0x00, 0x16, 0x9A, 0xBC, 1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(messageLength(header), 0x1236U);
    EXPECT_EQ(messageId(header), MSGID_GPS);
    EXPECT_EQ(messageStamp(header), 0x0102030405060708U);
}
