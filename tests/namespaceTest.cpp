// What came after 1.0.0 takes no global name from a program, which may have its own.
#include <gtest/gtest.h>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/serialise.h"
#include "libvextrace/version.h"
#include "libvexutil/datablock.h"

struct FramedMessage {
    int framing_t;
};

enum { FRAMING_COMPLETE = 100, FRAMING_INCOMPLETE, FRAMING_DAMAGED };

static int serialise(const GPSTraceMessage& /*message*/) {
    return 200;
}

static int version() {
    return 300;
}

static int byteArrayToUint32(const uint8_t* /*source*/) {
    return 400;
}

TEST(NamespaceTest, LeavesNewNamesToPrograms) {
    EXPECT_EQ(FramedMessage{FRAMING_DAMAGED}.framing_t, 102);
    EXPECT_EQ(serialise(GPSTraceMessage()), 200);
    EXPECT_EQ(version(), 300);
    EXPECT_EQ(byteArrayToUint32(nullptr), 400);
}

TEST(NamespaceTest, HasTheFunctionsOfEveryWidth) {
    uint8_t bytes[8] = {};
    vextrace::uint64ToByteArray(0x0102030405060708, bytes);
    EXPECT_EQ(vextrace::byteArrayToUint8(bytes), 0x01U);
    EXPECT_EQ(vextrace::byteArrayToUint16(bytes), 0x0102U);
    EXPECT_EQ(vextrace::byteArrayToUint32(bytes), 0x01020304U);
    EXPECT_EQ(vextrace::byteArrayToUint64(bytes), 0x0102030405060708U);
    vextrace::uint16ToByteArray(0xA0A1, bytes);
    EXPECT_EQ(byteArrayToUint16(bytes), 0xA0A1U);
}
