#include "libvextrace/internal/InvalidMessage.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <sstream>

#include "libvextrace/InvalidMessageException.h"
#include "tests/support/TestMessage.h"
#include "tests/support/messages.h"

using vextrace::internal::InvalidMessage;

namespace {

// A whole header and two bytes of payload; the size field tells more than there is.
const Bytes BYTES = {0xFE, 0xDC, 0x80, 0x14, 0x9A, 0xBC, 0xF1, 0xE2,
                     0xD3, 0xC4, 0xB5, 0xA6, 0x97, 0x88, 0x0A, 0x00};

InvalidMessage messageOf(const Bytes& bytes, const char* reason = "Too odd.") {
    return InvalidMessage(bytes.data(), bytes.size(), reason);
}

// The front of BYTES.
Bytes front(size_t count) {
    return Bytes(BYTES.begin(), BYTES.begin() + static_cast<Bytes::difference_type>(count));
}

void expectWrites(const MessageBase& message, const Bytes& bytes) {
    Bytes written(bytes.size());
    uint8_t* pdest = written.data();
    EXPECT_EQ(message.writeToByteArray(pdest, written.size(), false), message.getSize());
    EXPECT_EQ(pdest, written.data() + written.size());
    EXPECT_EQ(written, bytes);
}

void expectEqual(const MessageBase& a, const MessageBase& b, bool equal) {
    EXPECT_EQ(a == b, equal);
    EXPECT_EQ(b == a, equal);
}

}  // namespace

TEST(InvalidMessageTest, HasTheIDOfNoValidMessage) {
    EXPECT_EQ(messageOf(BYTES).getMsgID(), MSGID_INVALID);
}

TEST(InvalidMessageTest, TakesReservedWordAndTimeStampFromAWholeHeader) {
    const InvalidMessage message = messageOf(front(14));
    EXPECT_EQ(message.getHeaderReserved(), 0x9ABCU);
    EXPECT_EQ(message.getTimeStamp(), 0xF1E2D3C4B5A69788U);
}

TEST(InvalidMessageTest, TakesNothingFromHalfAHeader) {
    const InvalidMessage message = messageOf(front(13));
    EXPECT_EQ(message.getHeaderReserved(), 0U);
    EXPECT_EQ(message.getTimeStamp(), 0U);
}

TEST(InvalidMessageTest, HasTwoLessThanItsBytesAsSize) {
    EXPECT_EQ(messageOf(BYTES).getSize(), 14U);
    EXPECT_EQ(messageOf(front(3)).getSize(), 1U);
    EXPECT_EQ(messageOf(front(2)).getSize(), 0U);
    EXPECT_EQ(messageOf(front(1)).getSize(), 0U);
    EXPECT_EQ(messageOf({}).getSize(), 0U);
}

TEST(InvalidMessageTest, WritesItsBytesUnchanged) {
    for (const size_t count : {0U, 1U, 2U, 13U, 14U, 16U}) {
        expectWrites(messageOf(front(count)), front(count));
    }
}

TEST(InvalidMessageTest, WritesMoreBytesThanAMessageCanHave) {
    const Bytes bytes(70000, 0x42);
    expectWrites(messageOf(bytes), bytes);
}

TEST(InvalidMessageTest, OwnsItsBytesAndReason) {
    Bytes bytes = BYTES;
    std::string reason = "Too odd.";
    const InvalidMessage message = messageOf(bytes, reason.c_str());
    bytes.assign(bytes.size(), 0xFF);
    reason.assign(reason.size(), 'X');
    expectWrites(message, BYTES);
    EXPECT_EQ(message.toString(), messageOf(BYTES).toString());
}

TEST(InvalidMessageTest, RefusesTooLittleRoomUntouched) {
    Bytes room(BYTES.size(), 0x77);
    uint8_t* pdest = room.data();
    try {
        messageOf(BYTES).writeToByteArray(pdest, 15, false);
        ADD_FAILURE() << "written";
    } catch (const InvalidMessageException& error) {
        EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
        EXPECT_EQ(error.getInvalidValue(), 15U);
        EXPECT_STREQ(error.what(), "InvalidMessage: No room for the bytes.");
    }
    EXPECT_EQ(room, Bytes(BYTES.size(), 0x77));
    EXPECT_EQ(pdest, room.data());
}

TEST(InvalidMessageTest, TellsTheRoomThatIsTooLittleUpTo65535) {
    const struct {
        size_t bytes;
        size_t room;
        uint16_t value;
    } cases[] = {{1, 0, 0},
                 {300, 299, 299},
                 {300, 256, 256},
                 {65536, 65535, 65535},
                 {70000, 65536, 65535},
                 {70000, 69999, 65535}};
    for (const auto& c : cases) {
        const InvalidMessage message = messageOf(Bytes(c.bytes, 0x42));
        Bytes room(c.room + 1, 0x77);
        uint8_t* pdest = room.data();
        try {
            message.writeToByteArray(pdest, c.room, false);
            ADD_FAILURE() << c.bytes << " bytes written into " << c.room;
        } catch (const InvalidMessageException& error) {
            EXPECT_EQ(error.getInvalidValue(), c.value) << c.bytes << " into " << c.room;
        }
    }
}

TEST(InvalidMessageTest, PrintsReasonAndBytesInOneLine) {
    EXPECT_EQ(messageOf(BYTES).toString(),
              "f1e2d3c4b5a69788 00000000  INVALID     | Too odd. 16 bytes:"
              " fe dc 80 14 9a bc f1 e2 d3 c4 b5 a6 97 88 0a 00");
    EXPECT_EQ(messageOf({}, "").toString(), "0000000000000000 00000000  INVALID     |  0 bytes:");
}

TEST(InvalidMessageTest, PrintsTheFirst16BytesAlone) {
    EXPECT_EQ(messageOf(Bytes(70000, 0x0B)).toString(),
              "0b0b0b0b0b0b0b0b 00000000  INVALID     | Too odd. 70000 bytes:"
              " 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b 0b ...");
}

TEST(InvalidMessageTest, PrintsTheSameWhateverTheStreamsFormat) {
    std::ostringstream os;
    os << std::oct << std::showbase << std::uppercase << std::left << std::setfill('*');
    std::ostream& returned = messageOf(BYTES).print(os);
    EXPECT_EQ(&returned, &os);
    EXPECT_EQ(os.str(), messageOf(BYTES).toString());
}

TEST(InvalidMessageTest, RestoresTheStreamsFormat) {
    std::ostringstream os;
    os << std::setfill('*') << std::showpos << std::scientific;
    const std::ios_base::fmtflags flags = os.flags();
    messageOf(BYTES).print(os);
    EXPECT_EQ(os.flags(), flags);
    EXPECT_EQ(os.fill(), '*');
}

TEST(InvalidMessageTest, ClonesAllItsState) {
    auto message = std::make_unique<InvalidMessage>(messageOf(BYTES));
    message->setMbnr(0x89ABCDEF);
    const std::string line = message->toString();
    const std::unique_ptr<MessageBase> clone(message->clone());
    message.reset();
    EXPECT_EQ(clone->toString(), line);
    EXPECT_EQ(clone->getMsgID(), MSGID_INVALID);
    EXPECT_EQ(clone->getHeaderReserved(), 0x9ABCU);
    expectWrites(*clone, BYTES);
}

TEST(InvalidMessageTest, EqualsAMessageOfTheSameBytes) {
    expectEqual(messageOf(BYTES), messageOf(BYTES, "Another reason."), true);
    expectEqual(messageOf({}), messageOf({}), true);
}

TEST(InvalidMessageTest, DiffersFromAMessageOfOtherBytes) {
    Bytes other = front(BYTES.size() - 1);
    other.push_back(0x01);
    expectEqual(messageOf(BYTES), messageOf(other), false);
    expectEqual(messageOf(BYTES), messageOf(front(15)), false);
}

TEST(InvalidMessageTest, DiffersFromMessagesOfOtherTypes) {
    TestMessage other(MSGID_INVALID, 0xF1E2D3C4B5A69788);
    other.bytes = BYTES;
    expectEqual(messageOf(BYTES), other, false);
    expectEqual(messageOf({}), GPSTraceMessage(), false);
}

TEST(InvalidMessageTest, ComesFromAnUnknownBus) {
    InvalidMessage message = messageOf(BYTES);
    EXPECT_EQ(message.getSourceChannel(), "INVALID");
    EXPECT_EQ(message.getSourceChannelID(), 0U);
    message.setMbnr(0x89ABCDEF);
    EXPECT_EQ(message.getSourceChannelID(), 0x89ABCDEF00000000U);
}
