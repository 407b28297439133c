#include "libvextrace/MessageFactory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

#include "libvexutil/datablock.h"
#include "tests/support/InvalidHandling.h"
#include "tests/support/TestMessage.h"
#include "tests/support/messages.h"
#include "tests/support/runAtOnce.h"

using vextrace::FramedMessage;
using vextrace::FRAMING_COMPLETE;
using vextrace::FRAMING_DAMAGED;
using vextrace::FRAMING_INCOMPLETE;
using vextrace::framing_t;

namespace messageFactoryTest {

// Each test has ids of its own, among those that are nobody's.
constexpr msgid_t testID(unsigned number) {
    return static_cast<msgid_t>(0xC100 + number);
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
};

struct Refusal {
    size_t bytesTaken;
    invalidMessageCause_t cause;
    uint16_t value;
    const char* text;
};

constexpr char WITHIN_HEADER[] = "MessageFactory: The bytes end within the header.";
constexpr char SIZE_TOO_SMALL[] = "MessageFactory: The size field is too small for the header.";
constexpr char WITHIN_MESSAGE[] = "MessageFactory: The bytes end within the message.";
constexpr char NO_READER[] =
    "MessageFactory: No reader for the message id; registerMessage() of its type registers one.";
constexpr char NO_MESSAGE[] = "MessageFactory: The reader gave no message.";
constexpr char REFUSED[] = "Refused by the reader.";

void expectError(const DecodedMessage& decoded, const Refusal& refusal) {
    EXPECT_EQ(decoded.bytesTaken, refusal.bytesTaken);
    ASSERT_TRUE(decoded.error.has_value());
    EXPECT_EQ(decoded.error->getCause(), refusal.cause);
    EXPECT_EQ(decoded.error->getInvalidValue(), refusal.value);
    EXPECT_STREQ(decoded.error->what(), refusal.text);
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
    const DecodedMessage none = decode(bytes);
    EXPECT_EQ(none.message, nullptr);
    expectError(none, refusal);

    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
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

void expectFrame(const FramedMessage& front, framing_t framing, size_t length) {
    EXPECT_EQ(front.framing, framing);
    EXPECT_EQ(front.length, length);
}

// Whether frame() tells what the header promises of len bytes that begin with the size field.
bool framesAsPromised(const FramedMessage& front, size_t size, size_t len) {
    if (len < 2) {
        return front.framing == FRAMING_INCOMPLETE && front.length == 14;
    }
    if (size < 12) {
        return front.framing == FRAMING_DAMAGED && front.length == 0;
    }
    const framing_t framing = len < size + 2 ? FRAMING_INCOMPLETE : FRAMING_COMPLETE;
    return front.framing == framing && front.length == size + 2;
}

// Whether decode() takes a whole message for one, and refuses what is none for its length. The
// message is of an id whose reader gives none.
bool agree(const FramedMessage& front, const DecodedMessage& decoded, size_t len) {
    const bool whole = front.framing == FRAMING_COMPLETE;
    return decoded.error.has_value() &&
           decoded.error->getCause() == (whole ? IM_MISC : IM_INVALID_LEN) &&
           decoded.bytesTaken == (whole ? front.length : len);
}

// The lengths at which something changes for this size field.
std::set<size_t> lengthsAround(size_t size) {
    return {0, 1, 2, 13, 14, size, size + 1, size + 2, size + 3, 65537, 65538};
}

TEST_F(MessageFactoryTest, NumbersTheFramings) {
    EXPECT_EQ(static_cast<int>(FRAMING_COMPLETE), 0);
    EXPECT_EQ(static_cast<int>(FRAMING_INCOMPLETE), 1);
    EXPECT_EQ(static_cast<int>(FRAMING_DAMAGED), 2);
    expectFrame(FramedMessage(), FRAMING_INCOMPLETE, 0);
}

TEST_F(MessageFactoryTest, FramesABeginningByTheHeaderItLacks) {
    const Bytes bytes = {0x00, 0x03};
    expectFrame(MessageFactory::frame(nullptr, 0), FRAMING_INCOMPLETE, 14);
    expectFrame(MessageFactory::frame(bytes.data(), 0), FRAMING_INCOMPLETE, 14);
    expectFrame(MessageFactory::frame(bytes.data(), 1), FRAMING_INCOMPLETE, 14);
    expectFrame(MessageFactory::frame(bytes.data(), 2), FRAMING_DAMAGED, 0);
}

TEST_F(MessageFactoryTest, FramesMessagesThatArriveByteByByte) {
    const Bytes first = messageOf(FREE_ID, {0x21, 0x43});
    const Bytes bytes = first + messageOf(PAYLOAD_ID, {0x65});
    for (size_t len = 2; len < first.size(); ++len) {
        SCOPED_TRACE(len);
        expectFrame(MessageFactory::frame(bytes.data(), len), FRAMING_INCOMPLETE, 16);
    }
    for (size_t len = first.size(); len <= bytes.size(); ++len) {
        SCOPED_TRACE(len);
        expectFrame(MessageFactory::frame(bytes.data(), len), FRAMING_COMPLETE, 16);
    }
}

TEST_F(MessageFactoryTest, FramesEverySizeFieldAndLengthAsPromised) {
    Bytes bytes(65538, 0xFF);
    for (size_t size = 0; size <= 0xFFFF; ++size) {
        uint16ToByteArray(static_cast<uint16_t>(size), bytes.data());
        for (const size_t len : lengthsAround(size)) {
            ASSERT_TRUE(framesAsPromised(MessageFactory::frame(bytes.data(), len), size, len))
                << size << ' ' << len;
        }
    }
    for (const uint16_t size : std::vector<uint16_t>{0, 11, 12, 13, 300, 0x1000, 0xFFFF}) {
        uint16ToByteArray(size, bytes.data());
        for (size_t len = 0; len <= bytes.size(); ++len) {
            ASSERT_TRUE(framesAsPromised(MessageFactory::frame(bytes.data(), len), size, len))
                << size << ' ' << len;
        }
    }
}

TEST_F(MessageFactoryTest, FramesWhatItDecodes) {
    Bytes bytes = messageOf(NULL_ID, Bytes(65524, 0x42));
    for (size_t size = 0; size <= 0xFFFF; size += size < 300 ? 1 : 97) {
        uint16ToByteArray(static_cast<uint16_t>(size), bytes.data());
        for (const size_t len : lengthsAround(size)) {
            ASSERT_TRUE(agree(MessageFactory::frame(bytes.data(), len),
                              MessageFactory::decode(bytes.data(), len), len))
                << size << ' ' << len;
        }
    }
    for (const uint16_t size : std::vector<uint16_t>{0, 11, 12, 13, 300, 0xFFFF}) {
        uint16ToByteArray(size, bytes.data());
        for (size_t len = 0; len <= 400; ++len) {
            ASSERT_TRUE(agree(MessageFactory::frame(bytes.data(), len),
                              MessageFactory::decode(bytes.data(), len), len))
                << size << ' ' << len;
        }
    }
}

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

TEST_F(MessageFactoryTest, TakesAReaderBack) {
    ASSERT_TRUE(MessageFactory::registerReader(testID(62), &readPayload));
    EXPECT_TRUE(MessageFactory::unregisterReader(testID(62), &readPayload));
    EXPECT_EQ(MessageFactory::getReader(testID(62)), nullptr);
    expectRefused(messageOf(testID(62), {0x21}), {15, IM_INVALID_MSGID, testID(62), NO_READER});
    EXPECT_FALSE(MessageFactory::unregisterReader(testID(62), &readPayload));
}

TEST_F(MessageFactoryTest, FreesTheIDOfAReaderThatIsTakenBack) {
    ASSERT_TRUE(MessageFactory::registerReader(testID(63), &readNumber<1>));
    ASSERT_TRUE(MessageFactory::unregisterReader(testID(63), &readNumber<1>));
    EXPECT_TRUE(MessageFactory::registerReader(testID(63), &readNumber<2>));
    EXPECT_EQ(holder(testID(63)), 2U);
    EXPECT_FALSE(MessageFactory::registerReader(testID(63), &readNumber<1>));
    EXPECT_EQ(holder(testID(63)), 2U);
    EXPECT_TRUE(MessageFactory::unregisterReader(testID(63), &readNumber<2>));
}

TEST_F(MessageFactoryTest, RegistersAReaderAgainThatWasTakenBack) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(MessageFactory::registerReader(testID(64), &readNumber<1>));
        EXPECT_EQ(holder(testID(64)), 1U);
        EXPECT_TRUE(MessageFactory::unregisterReader(testID(64), &readNumber<1>));
        EXPECT_EQ(MessageFactory::getReader(testID(64)), nullptr);
    }
}

TEST_F(MessageFactoryTest, TakesNoReaderBackThatDoesNotHoldTheID) {
    ASSERT_TRUE(MessageFactory::registerReader(testID(65), &readNumber<1>));
    EXPECT_FALSE(MessageFactory::unregisterReader(testID(65), &readNumber<2>));
    EXPECT_FALSE(MessageFactory::unregisterReader(testID(65), nullptr));
    EXPECT_EQ(holder(testID(65)), 1U);
    EXPECT_FALSE(MessageFactory::unregisterReader(testID(66), &readNumber<1>));
    EXPECT_FALSE(MessageFactory::unregisterReader(testID(66), nullptr));
    EXPECT_EQ(MessageFactory::getReader(testID(66)), nullptr);
}

TEST_F(MessageFactoryTest, TakesNullBackFromNoID) {
    ASSERT_TRUE(MessageFactory::registerReader(testID(67), &readNumber<1>));
    ASSERT_TRUE(MessageFactory::unregisterReader(testID(67), &readNumber<1>));
    EXPECT_FALSE(MessageFactory::unregisterReader(testID(67), nullptr));
    EXPECT_FALSE(MessageFactory::registerReader(testID(67), nullptr));
}

TEST_F(MessageFactoryTest, LeavesOtherIDsOfAReaderThatIsTakenBack) {
    ASSERT_TRUE(MessageFactory::registerReader(testID(68), &readNumber<1>));
    ASSERT_TRUE(MessageFactory::registerReader(testID(69), &readNumber<1>));
    ASSERT_TRUE(MessageFactory::registerReader(testID(70), &readNumber<2>));
    EXPECT_TRUE(MessageFactory::unregisterReader(testID(69), &readNumber<1>));
    EXPECT_EQ(holder(testID(68)), 1U);
    EXPECT_EQ(MessageFactory::getReader(testID(69)), nullptr);
    EXPECT_EQ(holder(testID(70)), 2U);
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
    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
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
    expectError(all[0], {15, IM_INVALID_MSGID, FREE_ID, NO_READER});
    expectError(all[1], {16, IM_INVALID_ENUM_VALUE, 0xFEDC, REFUSED});
    expectError(all[2], {14, IM_MISC, 0, NO_MESSAGE});
    expectPayload(all[3], {0x21});
    expectError(all[4], {5, IM_INVALID_LEN, 5, WITHIN_HEADER});
}

TEST_F(MessageFactoryTest, LosesNoByteOfATraceWithInvalidMessages) {
    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
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
    expectRefused({}, {0, IM_INVALID_LEN, 0, WITHIN_HEADER});
}

TEST_F(MessageFactoryTest, TakesNullForARangeWithoutBytes) {
    const DecodedMessage decoded = MessageFactory::decode(nullptr, 0);
    EXPECT_EQ(decoded.message, nullptr);
    expectError(decoded, {0, IM_INVALID_LEN, 0, WITHIN_HEADER});
}

TEST_F(MessageFactoryTest, RefusesLessThanAHeader) {
    const Bytes message = messageOf(PAYLOAD_ID, {});
    for (uint16_t len = 1; len < 14; ++len) {
        expectRefused(Bytes(message.data(), message.data() + len),
                      {len, IM_INVALID_LEN, len, WITHIN_HEADER});
    }
}

TEST_F(MessageFactoryTest, RefusesASizeFieldBelowTheHeaderForAllOfTheRange) {
    for (const uint16_t size : std::vector<uint16_t>{0, 1, 2, 11}) {
        expectRefused(messageOf(PAYLOAD_ID, size, {0x21, 0x43}),
                      {16, IM_INVALID_LEN, size, SIZE_TOO_SMALL});
    }
}

TEST_F(MessageFactoryTest, RefusesASizeFieldBeyondTheRangeForAllOfTheRange) {
    for (const uint16_t size : std::vector<uint16_t>{15, 16, 0x0100, 0xFFFE, 0xFFFF}) {
        expectRefused(messageOf(PAYLOAD_ID, size, {0x21, 0x43}),
                      {16, IM_INVALID_LEN, size, WITHIN_MESSAGE});
    }
}

TEST_F(MessageFactoryTest, RefusesMoreBytesThanAMessageCanHaveAtOnce) {
    expectRefused(messageOf(PAYLOAD_ID, 11, Bytes(70000, 0x42)),
                  {70014, IM_INVALID_LEN, 11, SIZE_TOO_SMALL});
}

TEST_F(MessageFactoryTest, ChecksTheSizeFieldBeforeTheID) {
    expectRefused(messageOf(FREE_ID, 13, {}), {14, IM_INVALID_LEN, 13, WITHIN_MESSAGE});
}

TEST_F(MessageFactoryTest, RefusesAnIDWithoutReader) {
    expectRefused(messageOf(FREE_ID, {0x21}) + Bytes(3, 0x81),
                  {15, IM_INVALID_MSGID, FREE_ID, NO_READER});
}

TEST_F(MessageFactoryTest, PassesOnTheRefusalOfAReader) {
    const Bytes bytes = messageOf(REFUSING_ID, {0x21}) + Bytes(3, 0x81);
    expectRefused(bytes, {15, IM_INVALID_ENUM_VALUE, 0xFEDC, REFUSED});
}

TEST_F(MessageFactoryTest, RefusesWhatAReaderReturnsNullFor) {
    expectRefused(messageOf(NULL_ID, {0x21}) + Bytes(3, 0x81), {15, IM_MISC, 0, NO_MESSAGE});
}

TEST_F(MessageFactoryTest, RefusesAGPSMessageWithoutSentence) {
    expectRefused(serialised(0, TIME_STAMP, "\n\n"),
                  {16, IM_MISC, 0, "GPSTraceMessage: No NMEA code found."});
}

TEST_F(MessageFactoryTest, LetsOtherExceptionsOfAReaderPass) {
    const Bytes bytes = messageOf(FAILING_ID, {0x21});
    EXPECT_THROW(decode(bytes), std::runtime_error);
    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
    EXPECT_THROW(decode(bytes), std::runtime_error);
}

TEST_F(MessageFactoryTest, TakesTimeStampAndReservedWordIntoTheInvalidMessage) {
    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
    const DecodedMessage decoded = decode(messageOf(FREE_ID, {0x21}));
    ASSERT_NE(decoded.message, nullptr);
    EXPECT_EQ(decoded.message->getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(decoded.message->getHeaderReserved(), 0x9ABCU);
}

TEST_F(MessageFactoryTest, GivesAnIDToOneOfSeveralThreads) {
    constexpr unsigned IDS = 500;
    std::vector<std::atomic<unsigned>> winners(IDS);
    runAtOnce(READERS, IDS, [&winners](unsigned thread, unsigned round) {
        if (MessageFactory::registerReader(testID(0xB00 + round), NUMBERED[thread])) {
            winners[round] += 1;
        }
    });
    for (unsigned i = 0; i < IDS; ++i) {
        EXPECT_EQ(winners[i], 1U) << i;
        EXPECT_LT(holder(testID(0xB00 + i)), READERS) << i;
    }
}

TEST_F(MessageFactoryTest, LosesNoneOfTheIDsThatSeveralThreadsRegister) {
    constexpr unsigned IDS = 300;
    std::atomic<unsigned> refused{0};
    runAtOnce(READERS, IDS, [&refused](unsigned thread, unsigned round) {
        const msgid_t id = testID(0x600 + round * READERS + thread);
        refused += MessageFactory::registerReader(id, NUMBERED[thread]) ? 0U : 1U;
    });
    EXPECT_EQ(refused, 0U);
    for (unsigned i = 0; i < IDS * READERS; ++i) {
        EXPECT_EQ(holder(testID(0x600 + i)), i % READERS) << i;
    }
}

TEST_F(MessageFactoryTest, GivesAFreedIDToOneOfSeveralThreads) {
    constexpr unsigned ROUNDS = 300;
    const msgid_t id = testID(73);
    std::atomic<unsigned> wins{0};
    std::atomic<unsigned> returns{0};
    runAtOnce(READERS, ROUNDS, [&](unsigned thread, unsigned) {
        if (MessageFactory::registerReader(id, NUMBERED[thread])) {
            ++wins;
            returns += MessageFactory::unregisterReader(id, NUMBERED[thread]) ? 1U : 0U;
        }
    });
    EXPECT_GE(wins, ROUNDS);
    EXPECT_EQ(returns, wins);
    EXPECT_EQ(MessageFactory::getReader(id), nullptr);
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

TEST_F(MessageFactoryTest, DecodesWhileOtherThreadsTakeReadersBack) {
    constexpr unsigned THREADS = 4;
    constexpr unsigned ROUNDS = 300;
    const Bytes bytes = messageOf(PAYLOAD_ID, {0x21, 0x43});
    std::atomic<unsigned> wrong{0};
    runAtOnce(THREADS, ROUNDS, [&](unsigned thread, unsigned) {
        bool right = true;
        if (thread < 2) {
            const msgid_t id = testID(71 + thread);
            right = MessageFactory::registerReader(id, NUMBERED[thread]) &&
                    MessageFactory::getReader(id) == NUMBERED[thread] &&
                    MessageFactory::unregisterReader(id, NUMBERED[thread]) &&
                    MessageFactory::getReader(id) == nullptr;
        } else {
            const DecodedMessage decoded = decode(bytes);
            const auto* message = dynamic_cast<const TestMessage*>(decoded.message.get());
            right = message != nullptr && message->bytes == Bytes{0x21, 0x43};
        }
        wrong += right ? 0U : 1U;
    });
    EXPECT_EQ(wrong, 0U);
}

TEST_F(MessageFactoryTest, CannotBeBuilt) {
    EXPECT_FALSE(std::is_default_constructible_v<MessageFactory>);
}

TEST_F(MessageFactoryTest, AnswersWithNothingByDefault) {
    const DecodedMessage decoded;
    EXPECT_EQ(decoded.message, nullptr);
    EXPECT_EQ(decoded.bytesTaken, 0U);
    EXPECT_FALSE(decoded.error.has_value());
    EXPECT_TRUE((std::is_same_v<decltype(decoded.message), std::unique_ptr<MessageBase>>));
    EXPECT_TRUE((std::is_same_v<decltype(decoded.bytesTaken), size_t>));
    EXPECT_TRUE((std::is_same_v<decltype(decoded.error), std::optional<InvalidMessageException>>));
}

}  // namespace messageFactoryTest
