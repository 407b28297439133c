#include "libvextrace/MessageFactory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "libvexutil/datablock.h"
#include "tests/support/TestMessage.h"
#include "tests/support/messages.h"

namespace {

// Readers cannot be withdrawn: each test has ids of its own, which no message type has.
constexpr msgid_t testID(unsigned number) {
    return static_cast<msgid_t>(0xE100 + number);
}

constexpr msgid_t FREE_ID = testID(0);
constexpr msgid_t PAYLOAD_ID = testID(1);
constexpr msgid_t REFUSING_ID = testID(2);
constexpr msgid_t NULL_ID = testID(3);
constexpr msgid_t FAILING_ID = testID(4);

constexpr timeStamp_t TIME_STAMP = 0xF1E2D3C4B5A69788;

// A message whose size field says what it is told to.
Bytes messageOf(msgid_t id, uint16_t size, const Bytes& payload) {
    Bytes bytes(MessageBase::MO_BASE_DERIVED);
    uint16ToByteArray(size, bytes.data());
    uint16ToByteArray(id, bytes.data() + MessageBase::MO_MSGID);
    uint16ToByteArray(0x9ABC, bytes.data() + MessageBase::MO_HDRRESERVED);
    uint64ToByteArray(TIME_STAMP, bytes.data() + MessageBase::MO_TIMESTAMP);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

Bytes messageOf(msgid_t id, const Bytes& payload) {
    return messageOf(id, static_cast<uint16_t>(12 + payload.size()), payload);
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Tells of what it was given by the message that it makes.
MessageBase* readPayload(const uint8_t* psrc, size_t len) {
    auto* message = new TestMessage(PAYLOAD_ID, byteArrayToUint64(psrc + 6));
    message->bytes.assign(psrc + 14, psrc + len);
    return message;
}

MessageBase* readRefusing(const uint8_t* /*psrc*/, size_t /*len*/) {
    throw InvalidMessageException(IM_INVALID_ENUM_VALUE, "Refused by the reader.", 0xFEDC);
}

MessageBase* readNull(const uint8_t* /*psrc*/, size_t /*len*/) {
    return nullptr;
}

MessageBase* readFailing(const uint8_t* /*psrc*/, size_t /*len*/) {
    throw std::runtime_error("The reader failed.");
}

// Readers that can be told apart.
template <timeStamp_t NUMBER>
MessageBase* readNumber(const uint8_t* /*psrc*/, size_t /*len*/) {
    return new TestMessage(FREE_ID, NUMBER);
}

constexpr MessageFactory::Reader NUMBERED[] = {&readNumber<0>, &readNumber<1>, &readNumber<2>,
                                               &readNumber<3>};
constexpr unsigned READERS = 4;

DecodedMessage decode(const Bytes& bytes) {
    return MessageFactory::decode(bytes.data(), bytes.size());
}

// The number of the reader that holds the id.
timeStamp_t holder(msgid_t id) {
    const DecodedMessage decoded = decode(messageOf(id, {}));
    return decoded.message != nullptr ? decoded.message->getTimeStamp() : ~timeStamp_t{0};
}

class MessageFactoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(GPSTraceMessage::registerMessage());
        ASSERT_TRUE(MessageFactory::registerReader(PAYLOAD_ID, &readPayload));
        ASSERT_TRUE(MessageFactory::registerReader(REFUSING_ID, &readRefusing));
        ASSERT_TRUE(MessageFactory::registerReader(NULL_ID, &readNull));
        ASSERT_TRUE(MessageFactory::registerReader(FAILING_ID, &readFailing));
    }

    void TearDown() override { MessageBase::invalidHandling = handling; }

private:
    const invalidMsgHandling_t handling = MessageBase::invalidHandling;
};

struct Refusal {
    size_t bytesTaken;
    invalidMessageCause_t cause;
    uint16_t value;
};

void expectError(const DecodedMessage& decoded, const Refusal& refusal) {
    EXPECT_EQ(decoded.bytesTaken, refusal.bytesTaken);
    ASSERT_TRUE(decoded.error.has_value());
    EXPECT_EQ(decoded.error->getCause(), refusal.cause);
    EXPECT_EQ(decoded.error->getInvalidValue(), refusal.value);
}

void expectInvalidMessage(const DecodedMessage& decoded, const Bytes& bytes) {
    ASSERT_NE(decoded.message, nullptr);
    EXPECT_EQ(decoded.message->getMsgID(), MSGID_INVALID);
    Bytes written(bytes.size());
    uint8_t* pdest = written.data();
    decoded.message->writeToByteArray(pdest, written.size(), false);
    EXPECT_EQ(pdest, written.data() + written.size());
    EXPECT_EQ(written, bytes);
    EXPECT_NE(decoded.message->toString().find(decoded.error->what()), std::string::npos);
}

// Decodes under either handling.
void expectRefused(const Bytes& bytes, const Refusal& refusal) {
    MessageBase::invalidHandling = IMH_RETURN_NULL;
    const DecodedMessage none = decode(bytes);
    EXPECT_EQ(none.message, nullptr);
    expectError(none, refusal);

    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    const DecodedMessage invalid = decode(bytes);
    expectError(invalid, refusal);
    expectInvalidMessage(invalid, Bytes(bytes.data(), bytes.data() + refusal.bytesTaken));
}

void expectPayload(const DecodedMessage& decoded, const Bytes& payload) {
    EXPECT_FALSE(decoded.error.has_value());
    EXPECT_EQ(decoded.bytesTaken, 14 + payload.size());
    const auto* message = dynamic_cast<const TestMessage*>(decoded.message.get());
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(message->bytes, payload);
}

// Every answer to messages that lie back to back.
std::vector<DecodedMessage> walk(const Bytes& bytes) {
    std::vector<DecodedMessage> all;
    const uint8_t* psrc = bytes.data();
    size_t len = bytes.size();
    while (len > 0) {
        all.push_back(MessageFactory::decode(psrc, len));
        psrc += all.back().bytesTaken;
        len -= all.back().bytesTaken;
    }
    return all;
}

}  // namespace

TEST_F(MessageFactoryTest, TellsTheReaderOfAnId) {
    ASSERT_TRUE(MessageFactory::registerReader(testID(60), readPayload));
    EXPECT_EQ(MessageFactory::getReader(testID(60)), &readPayload);
    EXPECT_EQ(MessageFactory::getReader(testID(61)), nullptr);
}

TEST_F(MessageFactoryTest, RegistersAReaderOnceAndAgain) {
    EXPECT_TRUE(MessageFactory::registerReader(testID(10), &readNumber<1>));
    EXPECT_TRUE(MessageFactory::registerReader(testID(10), &readNumber<1>));
    EXPECT_EQ(holder(testID(10)), 1U);
}

TEST_F(MessageFactoryTest, KeepsTheFirstReaderOfAnID) {
    EXPECT_TRUE(MessageFactory::registerReader(testID(11), &readNumber<1>));
    EXPECT_FALSE(MessageFactory::registerReader(testID(11), &readNumber<2>));
    EXPECT_EQ(holder(testID(11)), 1U);
}

TEST_F(MessageFactoryTest, RefusesANullReader) {
    EXPECT_FALSE(MessageFactory::registerReader(testID(12), nullptr));
    EXPECT_TRUE(MessageFactory::registerReader(testID(12), &readNumber<1>));
    EXPECT_FALSE(MessageFactory::registerReader(testID(12), nullptr));
    EXPECT_EQ(holder(testID(12)), 1U);
}

TEST_F(MessageFactoryTest, RegistersOneReaderForSeveralIDs) {
    EXPECT_TRUE(MessageFactory::registerReader(testID(13), &readNumber<1>));
    EXPECT_TRUE(MessageFactory::registerReader(testID(14), &readNumber<1>));
    EXPECT_EQ(holder(testID(13)), 1U);
    EXPECT_EQ(holder(testID(14)), 1U);
}

TEST_F(MessageFactoryTest, TakesBothBytesOfTheID) {
    EXPECT_TRUE(MessageFactory::registerReader(testID(0x0F), &readNumber<1>));
    EXPECT_TRUE(MessageFactory::registerReader(testID(0x10F), &readNumber<2>));
    EXPECT_EQ(holder(testID(0x0F)), 1U);
    EXPECT_EQ(holder(testID(0x10F)), 2U);
}

TEST_F(MessageFactoryTest, DecodesAMessageThatFillsTheRange) {
    expectPayload(decode(messageOf(PAYLOAD_ID, {0x21, 0x43, 0x65})), {0x21, 0x43, 0x65});
}

TEST_F(MessageFactoryTest, DecodesAMessageWithoutPayload) {
    expectPayload(decode(messageOf(PAYLOAD_ID, {})), {});
}

TEST_F(MessageFactoryTest, DecodesTheLongestMessage) {
    const Bytes payload(65523, 0x42);
    expectPayload(decode(messageOf(PAYLOAD_ID, payload)), payload);
}

TEST_F(MessageFactoryTest, HandsTheReaderItsMessageAlone) {
    const Bytes behind = {0x81, 0x82, 0x83};
    expectPayload(decode(messageOf(PAYLOAD_ID, {0x21, 0x43}) + behind), {0x21, 0x43});
    expectPayload(decode(messageOf(PAYLOAD_ID, {}) + behind), {});
}

TEST_F(MessageFactoryTest, DecodesTheSameUnderEitherHandling) {
    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    expectPayload(decode(messageOf(PAYLOAD_ID, {0x21, 0x43})), {0x21, 0x43});
}

TEST_F(MessageFactoryTest, DecodesGPSMessagesByTheirID) {
    const Bytes bytes = serialised(0x9ABC, TIME_STAMP, GGA_SENTENCE + '\n' + RMC_SENTENCE + '\n');
    const auto message = rebuild(bytes);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getMsgID(), MSGID_GPS);
    EXPECT_EQ(writtenBytes(*message), bytes);
}

TEST_F(MessageFactoryTest, WalksMessagesThatLieBackToBack) {
    const Bytes gps = serialised(0, 1, RMC_SENTENCE + '\n');
    const Bytes bytes = messageOf(PAYLOAD_ID, {0x21, 0x43}) + gps + messageOf(PAYLOAD_ID, {}) +
                        messageOf(PAYLOAD_ID, {0x65});
    const std::vector<DecodedMessage> all = walk(bytes);
    ASSERT_EQ(all.size(), 4U);
    expectPayload(all[0], {0x21, 0x43});
    EXPECT_EQ(writtenBytes(*all[1].message), gps);
    expectPayload(all[2], {});
    expectPayload(all[3], {0x65});
}

TEST_F(MessageFactoryTest, WalksOnBehindAMessageThatCannotBeDecoded) {
    const Bytes bytes = messageOf(FREE_ID, {0x0A}) + messageOf(REFUSING_ID, {0x0B, 0x0C}) +
                        messageOf(NULL_ID, {}) + messageOf(PAYLOAD_ID, {0x21}) + Bytes(5, 0x00);
    const std::vector<DecodedMessage> all = walk(bytes);
    ASSERT_EQ(all.size(), 5U);
    expectError(all[0], {15, IM_INVALID_MSGID, FREE_ID});
    expectError(all[1], {16, IM_INVALID_ENUM_VALUE, 0xFEDC});
    expectError(all[2], {14, IM_MISC, 0});
    expectPayload(all[3], {0x21});
    expectError(all[4], {5, IM_INVALID_LEN, 5});
}

TEST_F(MessageFactoryTest, LosesNoByteOfATraceWithInvalidMessages) {
    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    const Bytes bytes = messageOf(FREE_ID, {0x0A}) + serialised(0, 1, RMC_SENTENCE + '\n') +
                        messageOf(PAYLOAD_ID, 20, {0x0B, 0x0C});
    Bytes written;
    for (const DecodedMessage& decoded : walk(bytes)) {
        ASSERT_NE(decoded.message, nullptr);
        written = written + writtenBytes(*decoded.message);
    }
    EXPECT_EQ(written, bytes);
}

TEST_F(MessageFactoryTest, RefusesARangeWithoutBytes) {
    expectRefused({}, {0, IM_INVALID_LEN, 0});
}

TEST_F(MessageFactoryTest, TakesNullForARangeWithoutBytes) {
    const DecodedMessage decoded = MessageFactory::decode(nullptr, 0);
    EXPECT_EQ(decoded.message, nullptr);
    expectError(decoded, {0, IM_INVALID_LEN, 0});
}

TEST_F(MessageFactoryTest, RefusesLessThanAHeader) {
    const Bytes message = messageOf(PAYLOAD_ID, {});
    for (uint16_t len = 1; len < 14; ++len) {
        expectRefused(Bytes(message.data(), message.data() + len), {len, IM_INVALID_LEN, len});
    }
}

TEST_F(MessageFactoryTest, RefusesASizeFieldBelowTheHeaderForAllOfTheRange) {
    for (const uint16_t size : std::vector<uint16_t>{0, 1, 2, 11}) {
        expectRefused(messageOf(PAYLOAD_ID, size, {0x21, 0x43}), {16, IM_INVALID_LEN, size});
    }
}

TEST_F(MessageFactoryTest, RefusesASizeFieldBeyondTheRangeForAllOfTheRange) {
    for (const uint16_t size : std::vector<uint16_t>{15, 16, 0x0100, 0xFFFE, 0xFFFF}) {
        expectRefused(messageOf(PAYLOAD_ID, size, {0x21, 0x43}), {16, IM_INVALID_LEN, size});
    }
}

TEST_F(MessageFactoryTest, RefusesMoreBytesThanAMessageCanHaveAtOnce) {
    expectRefused(messageOf(PAYLOAD_ID, 11, Bytes(70000, 0x42)), {70014, IM_INVALID_LEN, 11});
}

TEST_F(MessageFactoryTest, ChecksTheSizeFieldBeforeTheID) {
    expectRefused(messageOf(FREE_ID, 13, {}), {14, IM_INVALID_LEN, 13});
}

TEST_F(MessageFactoryTest, RefusesAnIDWithoutReader) {
    expectRefused(messageOf(FREE_ID, {0x21}) + Bytes(3, 0x81), {15, IM_INVALID_MSGID, FREE_ID});
}

TEST_F(MessageFactoryTest, PassesOnTheRefusalOfAReader) {
    const Bytes bytes = messageOf(REFUSING_ID, {0x21}) + Bytes(3, 0x81);
    expectRefused(bytes, {15, IM_INVALID_ENUM_VALUE, 0xFEDC});
    EXPECT_STREQ(decode(bytes).error->what(), "Refused by the reader.");
}

TEST_F(MessageFactoryTest, RefusesWhatAReaderReturnsNullFor) {
    expectRefused(messageOf(NULL_ID, {0x21}) + Bytes(3, 0x81), {15, IM_MISC, 0});
}

TEST_F(MessageFactoryTest, RefusesAGPSMessageWithoutSentence) {
    expectRefused(serialised(0, TIME_STAMP, "\n\n"), {16, IM_MISC, 0});
}

TEST_F(MessageFactoryTest, LetsOtherExceptionsOfAReaderPass) {
    const Bytes bytes = messageOf(FAILING_ID, {0x21});
    EXPECT_THROW(decode(bytes), std::runtime_error);
    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    EXPECT_THROW(decode(bytes), std::runtime_error);
}

TEST_F(MessageFactoryTest, TakesTimeStampAndReservedWordIntoTheInvalidMessage) {
    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    const DecodedMessage decoded = decode(messageOf(FREE_ID, {0x21}));
    ASSERT_NE(decoded.message, nullptr);
    EXPECT_EQ(decoded.message->getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(decoded.message->getHeaderReserved(), 0x9ABCU);
}

TEST_F(MessageFactoryTest, GivesAnIDToOneOfSeveralThreads) {
    constexpr unsigned IDS = 200;
    std::vector<std::atomic<unsigned>> winners(IDS);
    const auto registerAll = [&winners](unsigned reader) {
        for (unsigned i = 0; i < IDS; ++i) {
            if (MessageFactory::registerReader(testID(0x200 + i), NUMBERED[reader])) {
                winners[i] += 1;
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned reader = 0; reader < READERS; ++reader) {
        threads.emplace_back(registerAll, reader);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (unsigned i = 0; i < IDS; ++i) {
        EXPECT_EQ(winners[i], 1U) << i;
        EXPECT_LT(holder(testID(0x200 + i)), READERS) << i;
    }
}

TEST_F(MessageFactoryTest, DecodesWhileAnotherThreadRegisters) {
    constexpr unsigned IDS = 200;
    const auto registerAll = [] {
        for (unsigned i = 0; i < IDS; ++i) {
            EXPECT_TRUE(MessageFactory::registerReader(testID(0x400 + i), &readNumber<3>));
        }
    };
    std::thread registering(registerAll);
    const Bytes bytes = messageOf(PAYLOAD_ID, {0x21, 0x43});
    for (unsigned i = 0; i < IDS; ++i) {
        expectPayload(decode(bytes), {0x21, 0x43});
    }
    registering.join();
    for (unsigned i = 0; i < IDS; ++i) {
        EXPECT_EQ(holder(testID(0x400 + i)), 3U) << i;
    }
}
