#include "libvextrace/MessageBase.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <sstream>
#include <type_traits>
#include <utility>

#include "libvextrace/InvalidMessageException.h"
#include "tests/support/TestMessage.h"
#include "tests/support/detected.h"
#include "tests/support/messages.h"

namespace {

constexpr timeStamp_t TIME_STAMP = 0xF1E2D3C4B5A69788;

TestMessage messageOf(const Bytes& payload) {
    TestMessage message(MSGID_CAN_TRANSPORT, TIME_STAMP);
    message.setHeaderReserved(0x9ABC);
    message.setMbnr(0x13579BDF);
    message.bytes = payload;
    message.text = "a text too long for the space within a string object";
    return message;
}

// What messageOf() writes in front of a payload of three bytes.
const Bytes HEADER = {0x00, 0x0F, 0x80, 0x14, 0x9A, 0xBC, 0xF1,
                      0xE2, 0xD3, 0xC4, 0xB5, 0xA6, 0x97, 0x88};
const Bytes PAYLOAD = {0x21, 0x43, 0x65};

void expectSameState(const TestMessage& message, const TestMessage& expected) {
    EXPECT_EQ(message.getMsgID(), expected.getMsgID());
    EXPECT_EQ(message.getTimeStamp(), expected.getTimeStamp());
    EXPECT_EQ(message.getHeaderReserved(), expected.getHeaderReserved());
    EXPECT_EQ(message.getMbnr(), expected.getMbnr());
    EXPECT_EQ(message.text, expected.text);
    EXPECT_EQ(message.bytes, expected.bytes);
}

void expectRefused(const MessageBase& message, size_t maxlen, uint16_t value) {
    const Bytes untouched(64, 0x77);
    Bytes bytes = untouched;
    uint8_t* pdest = bytes.data();
    try {
        message.writeToByteArray(pdest, maxlen, false);
        ADD_FAILURE() << "written into " << maxlen;
    } catch (const InvalidMessageException& error) {
        EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
        EXPECT_EQ(error.getInvalidValue(), value);
    }
    EXPECT_EQ(bytes, untouched);
    EXPECT_EQ(pdest, bytes.data());
}

std::string decimalText(const MessageBase& message) {
    std::ostringstream os;
    os << message;
    return os.str();
}

std::string hexadecimalText(const MessageBase& message) {
    std::ostringstream os;
    os << std::hex << std::setfill('0') << message;
    return os.str();
}

template <class Type>
using SetText = decltype(std::declval<Type&>().text = "");
template <class Type>
using SetBytes = decltype(std::declval<Type&>().bytes = {});

}  // namespace

TEST(MessageBaseTest, PlacesTheHeaderFields) {
    EXPECT_EQ(size_t{MessageBase::MO_MSGSIZE}, 0U);
    EXPECT_EQ(size_t{MessageBase::MO_MSGID}, 2U);
    EXPECT_EQ(size_t{MessageBase::MO_HDRRESERVED}, 4U);
    EXPECT_EQ(size_t{MessageBase::MO_TIMESTAMP}, 6U);
    EXPECT_EQ(size_t{MessageBase::MO_BASE_DERIVED}, 14U);
}

TEST(MessageBaseTest, PlacesTheFieldsOfTheSecondHeader) {
    EXPECT_EQ(size_t{MessageBase::MO2_MSGID}, 0U);
    EXPECT_EQ(size_t{MessageBase::MO2_MSGSIZE}, 1U);
    EXPECT_EQ(size_t{MessageBase::MO2_TIMESTAMP}, 3U);
    EXPECT_EQ(size_t{MessageBase::MO2_BASE_DERIVED}, 7U);
}

TEST(MessageBaseTest, IsOfVersion1) {
    EXPECT_EQ(MessageBase::version, 1U);
    EXPECT_TRUE((std::is_same_v<decltype(MessageBase::version), const uint8_t>));
}

TEST(MessageBaseTest, ReturnsNoMessageForInvalidBytesUnlessSet) {
    EXPECT_EQ(MessageBase::invalidHandling, IMH_RETURN_NULL);
    EXPECT_EQ(static_cast<int>(IMH_RETURN_NULL), 0);
    EXPECT_EQ(static_cast<int>(IMH_RETURN_INVALID_MESSAGE), 1);
}

TEST(MessageBaseTest, HasA64BitUnsignedTimeStamp) {
    EXPECT_TRUE((std::is_same_v<timeStamp_t, uint64_t>));
}

TEST(MessageBaseTest, StartsWithIDAndTimeStampAlone) {
    const TestMessage message(MSGID_CAN_TRANSPORT, TIME_STAMP);
    EXPECT_EQ(message.getMsgID(), MSGID_CAN_TRANSPORT);
    EXPECT_EQ(message.getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(message.getHeaderReserved(), 0U);
    EXPECT_EQ(message.getMbnr(), 0U);
    EXPECT_EQ(message.text, "");
    EXPECT_EQ(message.bytes, Bytes());
}

TEST(MessageBaseTest, KeepsReservedWordAndMbnrApart) {
    TestMessage message(MSGID_CAN, 0);
    message.setHeaderReserved(0xFEDC);
    EXPECT_EQ(message.getMbnr(), 0U);
    message.setMbnr(0x89ABCDEF);
    EXPECT_EQ(message.getHeaderReserved(), 0xFEDCU);
    EXPECT_EQ(message.getMbnr(), 0x89ABCDEFU);
}

TEST(MessageBaseTest, HasSize12WithoutPayload) {
    EXPECT_EQ(messageOf({}).getSize(), 12U);
    EXPECT_EQ(messageOf(PAYLOAD).MessageBase::getSize(), 12U);
}

TEST(MessageBaseTest, WritesTheHeaderInFrontOfThePayload) {
    Bytes expected = HEADER;
    expected.insert(expected.end(), PAYLOAD.begin(), PAYLOAD.end());
    EXPECT_EQ(writtenBytes(messageOf(PAYLOAD)), expected);
}

TEST(MessageBaseTest, WritesTheHeaderAloneByItself) {
    const TestMessage message = messageOf(PAYLOAD);
    Bytes bytes(20, 0x77);
    uint8_t* pdest = bytes.data() + 1;
    EXPECT_EQ(message.MessageBase::writeToByteArray(pdest, 17, false), 15U);
    EXPECT_EQ(pdest, bytes.data() + 15);
    EXPECT_EQ(bytes[0], 0x77U);
    EXPECT_EQ(Bytes(bytes.begin() + 1, bytes.begin() + 15), HEADER);
    EXPECT_EQ(Bytes(bytes.begin() + 15, bytes.end()), Bytes(5, 0x77));
}

TEST(MessageBaseTest, WritesTheSameBytesWithSync) {
    const TestMessage message = messageOf(PAYLOAD);
    Bytes bytes(17);
    uint8_t* pdest = bytes.data();
    EXPECT_EQ(message.writeToByteArray(pdest, bytes.size(), true), 15U);
    EXPECT_EQ(pdest, bytes.data() + bytes.size());
    EXPECT_EQ(bytes, writtenBytes(message));
}

TEST(MessageBaseTest, RefusesTooLittleRoomUntouched) {
    const TestMessage message = messageOf(PAYLOAD);
    for (uint16_t room = 0; room < 17; ++room) {
        expectRefused(message, room, room);
    }
}

TEST(MessageBaseTest, RefusesTooLittleRoomForTheHeaderUntouched) {
    expectRefused(messageOf({}), 13, 13);
}

TEST(MessageBaseTest, WritesASizeOf65535) {
    const Bytes bytes = writtenBytes(messageOf(Bytes(65523, 0x42)));
    EXPECT_EQ(bytes.size(), 65537U);
    EXPECT_EQ(bytes[0], 0xFFU);
    EXPECT_EQ(bytes[1], 0xFFU);
    EXPECT_EQ(bytes[65536], 0x42U);
}

TEST(MessageBaseTest, RefusesASizeAbove65535Untouched) {
    expectRefused(messageOf(Bytes(65524, 0x42)), 65538, 0xFFFF);
    expectRefused(messageOf(Bytes(65524 + 65536, 0x42)), 200000, 0xFFFF);
}

TEST(MessageBaseTest, NeverWritesAHeaderBeyondTheRoomWhateverTheTypeSaysOfItsSize) {
    class Understating : public TestMessage {
    public:
        using TestMessage::TestMessage;
        size_t getSize() const override { return 3; }
    };
    const Understating message(MSGID_CAN, 1);
    expectRefused(message, 5, 5);
    expectRefused(message, 13, 13);
    Bytes room(14);
    uint8_t* pdest = room.data();
    EXPECT_EQ(message.writeToByteArray(pdest, room.size(), false), 3U);
    EXPECT_EQ(pdest, room.data() + 14);
}

TEST(MessageBaseTest, ReportsARoomAbove65535As65535) {
    expectRefused(messageOf(Bytes(65523, 0x42)), 65536, 0xFFFF);
}

TEST(MessageBaseTest, SetsMbnrFromTheCascadeChannel) {
    TestMessage message = messageOf(PAYLOAD);
    const Bytes bytes = writtenBytes(message);
    message.cascadeChannel(0xFEDC);
    EXPECT_EQ(message.getMbnr(), 0xFEDCU);
    EXPECT_EQ(message.getSourceChannelID(), 0x0000FEDC00000103U);
    EXPECT_EQ(writtenBytes(message), bytes);
}

TEST(MessageBaseTest, NumbersSourcesByMbnrBusAndChannel) {
    EXPECT_EQ(MessageBase::getSourceChannelID(BUSID_UNKNOWN, 0, 0), 0U);
    EXPECT_EQ(MessageBase::getSourceChannelID(BUSID_GPS, 0, 0), 0x0D00U);
    EXPECT_EQ(MessageBase::getSourceChannelID(BUSID_CAN, 3, 2), 0x200000103U);
    EXPECT_EQ(MessageBase::getSourceChannelID(BUSID_WAKEUPLINE, 0xFE, 0x89ABCDEF),
              0x89ABCDEF000014FEU);
    EXPECT_EQ(MessageBase::getSourceChannelID(BUSID_NUM, 0xFF, 0xFFFFFFFF), 0xFFFFFFFF000015FFU);
}

TEST(MessageBaseTest, WritesTheCommonPartInColumns) {
    TestMessage message(MSGID_CAN, 1234567);
    message.setMbnr(89);
    EXPECT_EQ(decimalText(message), "         1234567       89");
    EXPECT_EQ(hexadecimalText(message), "000000000012d687 00000059");
}

TEST(MessageBaseTest, WritesTheGreatestNumbersOfTheCommonPart) {
    TestMessage message(MSGID_CAN, 0xFFFFFFFFFFFFFFFF);
    message.setMbnr(0xFFFFFFFF);
    EXPECT_EQ(decimalText(message), "18446744073709551615 4294967295");
    EXPECT_EQ(hexadecimalText(message), "ffffffffffffffff ffffffff");
}

TEST(MessageBaseTest, GoesOnWithTheSameStreamInItsOwnFormat) {
    std::ostringstream os;
    os << std::hex << std::setfill('*');
    std::ostream& returned = os << static_cast<const MessageBase&>(TestMessage(MSGID_CAN, 0xAB));
    EXPECT_EQ(&returned, &os);
    os << '|' << std::setw(4) << 255;
    EXPECT_EQ(os.str(), "**************ab *******0|**ff");
}

TEST(MessageBaseTest, CopiesAllItsStateDeeply) {
    TestMessage message = messageOf(PAYLOAD);
    const TestMessage copy(message);
    expectSameState(copy, messageOf(PAYLOAD));
    message.bytes[0] = 0xFF;
    message.text[0] = 'X';
    expectSameState(copy, messageOf(PAYLOAD));
}

TEST(MessageBaseTest, CopiesTheBufferInItsUsedLength) {
    TestMessage message = messageOf(PAYLOAD);
    message.bytes.reserve(1000);
    EXPECT_EQ(TestMessage(message).bytes.capacity(), PAYLOAD.size());
    message.bytes.clear();
    EXPECT_EQ(TestMessage(message).bytes.capacity(), 0U);
}

TEST(MessageBaseTest, AssignsAllItsStateDeeply) {
    TestMessage message = messageOf(PAYLOAD);
    TestMessage assigned(MSGID_LIN, 1);
    assigned = message;
    message.bytes[0] = 0xFF;
    message.text[0] = 'X';
    expectSameState(assigned, messageOf(PAYLOAD));
}

TEST(MessageBaseTest, MovesAllItsState) {
    TestMessage message = messageOf(PAYLOAD);
    TestMessage moved(std::move(message));
    expectSameState(moved, messageOf(PAYLOAD));
    TestMessage assigned(MSGID_LIN, 1);
    assigned = std::move(moved);
    expectSameState(assigned, messageOf(PAYLOAD));
}

TEST(MessageBaseTest, MovesWithoutThrowing) {
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<TestMessage>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<TestMessage>);
}

TEST(MessageBaseTest, CannotBeSliced) {
    EXPECT_TRUE(std::is_abstract_v<MessageBase>);
    EXPECT_FALSE(std::is_copy_assignable_v<MessageBase>);
    EXPECT_FALSE(std::is_move_assignable_v<MessageBase>);
}

TEST(MessageBaseTest, KeepsTextAndBufferForDerivedTypes) {
    EXPECT_TRUE((isDetected<SetText, TestMessage>));
    EXPECT_TRUE((isDetected<SetBytes, TestMessage>));
    EXPECT_FALSE((isDetected<SetText, MessageBase>));
    EXPECT_FALSE((isDetected<SetBytes, MessageBase>));
}

TEST(MessageBaseTest, ReachesTheDerivedTypeThroughTheBase) {
    const std::unique_ptr<MessageBase> clone(messageOf(PAYLOAD).clone());
    EXPECT_EQ(writtenBytes(*clone), writtenBytes(messageOf(PAYLOAD)));
    EXPECT_EQ(clone->toString(), "the text of the type");
    EXPECT_EQ(clone->getSourceChannel(), "TEST");
    EXPECT_EQ(clone->getSourceChannelID(), 0x13579BDF00000103U);
    EXPECT_TRUE(std::has_virtual_destructor_v<MessageBase>);
}
