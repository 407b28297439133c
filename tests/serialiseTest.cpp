#include "libvextrace/serialise.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/internal/InvalidMessage.h"
#include "tests/support/TestMessage.h"
#include "tests/support/messages.h"

using vextrace::appendSerialised;
using vextrace::serialise;
using vextrace::internal::InvalidMessage;

namespace {

GPSTraceMessage gpsMessage() {
    GPSTraceMessage message(0xF1E2D3C4B5A69788, "$GPRMC,A");
    message.addRecord("$GPGGA,B");
    message.setHeaderReserved(0x9ABC);
    return message;
}

const Bytes GPS_BYTES = {0x00, 0x1E, 0x00, 0x16, 0x9A, 0xBC, 0xF1, 0xE2, 0xD3, 0xC4, 0xB5,
                         0xA6, 0x97, 0x88, '$',  'G',  'P',  'G',  'G',  'A',  ',',  'B',
                         '\n', '$',  'G',  'P',  'R',  'M',  'C',  ',',  'A',  '\n'};

TestMessage messageOf(size_t payload) {
    TestMessage message(MSGID_CAN, 1);
    message.bytes = Bytes(payload, 0x42);
    return message;
}

Bytes joined(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Refuses to be written, in the middle.
class HalfWritten : public TestMessage {
public:
    HalfWritten() : TestMessage(MSGID_CAN, 1) { bytes = Bytes(100, 0x42); }

    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call)
        MessageBase::writeToByteArray(pdest, maxlen, sync);
        throw InvalidMessageException(IM_INVALID_PARAMETER, "No payload today.", 0xFEDC);
    }
};

// Tells what room it was given.
class RoomTeller : public TestMessage {
public:
    RoomTeller() : TestMessage(MSGID_CAN, 1) { bytes = Bytes(5, 0x42); }

    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override {
        room = maxlen;
        return TestMessage::writeToByteArray(pdest, maxlen, sync);
    }

    mutable size_t room = 0;
};

}  // namespace

TEST(SerialiseTest, GivesAllBytesOfAMessageAndNoOthers) {
    EXPECT_EQ(serialise(gpsMessage()), GPS_BYTES);
    EXPECT_EQ(serialise(GPSTraceMessage()), (Bytes{0, 12, 0, 22, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(serialise(messageOf(3)), writtenBytes(messageOf(3)));
    EXPECT_TRUE((std::is_same_v<decltype(serialise(gpsMessage())), std::vector<uint8_t>>));
}

TEST(SerialiseTest, GivesTheBytesOfAnInvalidMessageHoweverMany) {
    for (const size_t count : {0U, 1U, 2U, 13U, 14U, 70000U}) {
        const Bytes bytes(count, 0xAB);
        EXPECT_EQ(serialise(InvalidMessage(bytes.data(), count, "Too odd.")), bytes) << count;
    }
}

TEST(SerialiseTest, GivesTheMessageItsExactRoom) {
    const RoomTeller message;
    serialise(message);
    EXPECT_EQ(message.room, 19U);
    Bytes bytes(1000, 0x77);
    appendSerialised(message, bytes);
    EXPECT_EQ(message.room, 19U);
}

TEST(SerialiseTest, AppendsMessagesBackToBack) {
    Bytes bytes = {0xEE, 0xEF};
    appendSerialised(gpsMessage(), bytes);
    EXPECT_EQ(bytes, joined({0xEE, 0xEF}, GPS_BYTES));
    appendSerialised(messageOf(2), bytes);
    EXPECT_EQ(bytes, joined(joined({0xEE, 0xEF}, GPS_BYTES), writtenBytes(messageOf(2))));
}

TEST(SerialiseTest, AppendsInvalidMessagesHoweverShort) {
    Bytes bytes = {0xEE};
    for (uint8_t count = 0; count < 4; ++count) {
        const Bytes invalid(count, count);
        appendSerialised(InvalidMessage(invalid.data(), count, "Too odd."), bytes);
    }
    EXPECT_EQ(bytes, (Bytes{0xEE, 1, 2, 2, 3, 3, 3}));
}

TEST(SerialiseTest, TakesTheLongestMessage) {
    EXPECT_EQ(serialise(messageOf(65523)).size(), 65537U);
}

TEST(SerialiseTest, RefusesAMessageTooLongForItsSizeField) {
    Bytes bytes = {0xEE, 0xEF};
    try {
        appendSerialised(messageOf(65524), bytes);
        ADD_FAILURE() << "appended";
    } catch (const InvalidMessageException& error) {
        EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
        EXPECT_EQ(error.getInvalidValue(), 0xFFFF);
        EXPECT_STREQ(error.what(), "MessageBase: The message is too long for its size field.");
    }
    EXPECT_EQ(bytes, (Bytes{0xEE, 0xEF}));
    EXPECT_THROW(serialise(messageOf(65524)), InvalidMessageException);
}

TEST(SerialiseTest, LeavesTheVectorWhenAMessageIsRefusedInTheMiddle) {
    Bytes bytes = GPS_BYTES;
    try {
        appendSerialised(HalfWritten(), bytes);
        ADD_FAILURE() << "appended";
    } catch (const InvalidMessageException& error) {
        EXPECT_STREQ(error.what(), "No payload today.");
        EXPECT_EQ(error.getInvalidValue(), 0xFEDC);
    }
    EXPECT_EQ(bytes, GPS_BYTES);
}

TEST(SerialiseTest, LeavesTheMessage) {
    const GPSTraceMessage message = gpsMessage();
    serialise(message);
    EXPECT_EQ(serialise(message), GPS_BYTES);
}
