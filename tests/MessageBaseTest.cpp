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

namespace messageBaseTest {
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

constexpr char NO_ROOM[] = "MessageBase: No room for the message.";
constexpr char TOO_LONG[] = "MessageBase: The message is too long for its size field.";

void expectRefused(const MessageBase& message, size_t maxlen, uint16_t value,
                   const char* text = NO_ROOM) {
    const Bytes untouched(64, 0x77);
    Bytes bytes = untouched;
    uint8_t* pdest = bytes.data();
    try {
        message.writeToByteArray(pdest, maxlen, false);
        ADD_FAILURE() << "written into " << maxlen;
    } catch (const InvalidMessageException& error) {
        EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
        EXPECT_EQ(error.getInvalidValue(), value);
        EXPECT_STREQ(error.what(), text);
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

TEST(MessageBaseTest, SetsTheTimeStampAlone) {
    TestMessage message = messageOf(PAYLOAD);
    message.setTimeStamp(0x1021324354657687);
    EXPECT_EQ(message.getTimeStamp(), 0x1021324354657687U);
    message.setTimeStamp(TIME_STAMP);
    expectSameState(message, messageOf(PAYLOAD));
}

TEST(MessageBaseTest, DeclaresItsResults) {
    using Message = const MessageBase&;
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getMsgID()), msgid_t>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getTimeStamp()), timeStamp_t>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getHeaderReserved()), uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getMbnr()), uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getSize()), size_t>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().clone()), MessageBase*>));
}

TEST(MessageBaseTest, TakesTimeStampAndReservedWordFromAHeader) {
    TestMessage message(MSGID_CAN, 1);
    message.setMbnr(0x13579BDF);
    message.bytes = PAYLOAD;
    message.restoreHeader(HEADER.data(), HEADER.size());
    EXPECT_EQ(message.getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(message.getHeaderReserved(), 0x9ABCU);
    EXPECT_EQ(message.getMsgID(), MSGID_CAN);
    EXPECT_EQ(message.getMbnr(), 0x13579BDFU);
    EXPECT_EQ(message.bytes, PAYLOAD);
}

TEST(MessageBaseTest, TakesNothingFromHalfAHeader) {
    for (uint16_t len = 0; len < 14; ++len) {
        TestMessage message(MSGID_CAN, 0x1021324354657687);
        message.setHeaderReserved(0x5678);
        const Bytes half(HEADER.begin(), HEADER.begin() + len);
        try {
            message.restoreHeader(half.data(), half.size());
            ADD_FAILURE() << "restored from " << len;
        } catch (const InvalidMessageException& error) {
            EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
            EXPECT_EQ(error.getInvalidValue(), len);
            EXPECT_STREQ(error.what(), "MessageBase: The bytes end within the header.");
        }
        EXPECT_EQ(message.getTimeStamp(), 0x1021324354657687U);
        EXPECT_EQ(message.getHeaderReserved(), 0x5678U);
    }
}

TEST(MessageBaseTest, TakesTheHeaderOfALongMessage) {
    TestMessage message(MSGID_CAN, 1);
    Bytes bytes = HEADER;
    bytes.resize(70000, 0xEE);
    message.restoreHeader(bytes.data(), bytes.size());
    EXPECT_EQ(message.getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(message.getHeaderReserved(), 0x9ABCU);
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
    expectRefused(messageOf(Bytes(65524, 0x42)), 65538, 0xFFFF, TOO_LONG);
    expectRefused(messageOf(Bytes(65524 + 65536, 0x42)), 200000, 0xFFFF, TOO_LONG);
    expectRefused(messageOf(Bytes(65524, 0x42)), 3, 0xFFFF, TOO_LONG);
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

TEST(MessageBaseTest, LetsATypeCascadeInItsOwnWay) {
    class Counting : public TestMessage {
    public:
        using TestMessage::TestMessage;
        void cascadeChannel(uint16_t channel) override { mbnr += channel; }
    };
    Counting message(MSGID_CAN, 1);
    MessageBase& base = message;
    base.setMbnr(0x10000);
    base.cascadeChannel(0xFEDC);
    EXPECT_EQ(message.getMbnr(), 0x1FEDCU);
}

TEST(MessageBaseTest, NumbersSourcesOfAnyBusFromTheWire) {
    const auto number = [](int bus) {
        return MessageBase::getSourceChannelID(static_cast<busid_t>(bus), 0xAB, 0x89ABCDEF);
    };
    EXPECT_EQ(number(22), 0x89ABCDEF000016ABU);
    EXPECT_EQ(number(200), 0x89ABCDEF0000C8ABU);
    EXPECT_EQ(number(255), 0x89ABCDEF0000FFABU);
    // More than eight bits would reach the bits that are 0.
    EXPECT_EQ(number(256 + 13), 0x89ABCDEF00000DABU);
    EXPECT_EQ(number(-1), 0x89ABCDEF0000FFABU);
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
    expectSameState(message, messageOf(PAYLOAD));
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

}  // namespace messageBaseTest
