#include "tests/memory/failingMemory.h"

#include <cfloat>

#include "tests/support/InvalidHandling.h"
#include "tests/support/messages.h"

namespace failingMemoryTest {
namespace {

// Behind a point these make each field longer than what any standard library's string keeps inside
// itself, so that each text takes an allocation.
const std::string ZEROS(32, '0');
const std::string LONG_FIELDS_RMC = "$GNRMC,123519." + ZEROS + ",A,4807.038" + ZEROS +
                                    ",N,01131.0" + ZEROS + ",E,022.4" + ZEROS + ",084.4" + ZEROS +
                                    ",230394,003.1" + ZEROS + ",W,A*00\r\n";
const std::string LONG_FIELDS_GGA = "$GNGGA,123519." + ZEROS + ",4807.038" + ZEROS + ",N,01131.0" +
                                    ZEROS + ",E,1,08,0.9,545.4" + ZEROS + ",M,46.9" + ZEROS +
                                    ",M,,*00\r\n";
const std::string PROPRIETARY = "$PXYZE,1,2,3,4,5,6,7,8,9,10,11,12*00\r\n";

GPSTraceMessage fullMessage() {
    GPSTraceMessage message(258, LONG_FIELDS_RMC);
    message.addRecord(LONG_FIELDS_GGA);
    return message;
}

// Asks everything that a message answers without changing.
void expectAnswers(const GPSTraceMessage& message, const std::string& payload) {
    EXPECT_EQ(payloadOf(message), payload);
    GPSTraceMessage::numeric_gprmc_t gprmc;
    EXPECT_EQ(message.getGPRMC(gprmc), message.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPRMC));
    EXPECT_FALSE(message.getString().empty());
    EXPECT_FALSE(static_cast<const MessageBase&>(message).toString().empty());
}

}  // namespace

TEST(FailingMemoryTest, ConstructionFromTextPassesTheFailureOn) {
    EXPECT_EQ(failEachAllocation([] { GPSTraceMessage message(1, LONG_FIELDS_RMC); }), 2U);
}

TEST(FailingMemoryTest, SentenceOfAHeldCodeNeedsNone) {
    GPSTraceMessage message(1, RMC_SENTENCE);
    message.addRecord(GGA_SENTENCE);
    EXPECT_EQ(failEachAllocation([&] { message.addRecord(RMC_SENTENCE); }), 0U);
}

TEST(FailingMemoryTest, DecodingCopiesTheInputAndEachSentenceOnce) {
    if (!failingMemory::keepsShortTextsInside()) {
        GTEST_SKIP() << "Strings of this compiler take an allocation for every text.";
    }
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    const MessageFactory::Reader read = MessageFactory::getReader(MSGID_GPS);
    const Bytes bytes = serialised(1, 2, RMC_SENTENCE + "\n" + GGA_SENTENCE + "\n");
    // The message, the copy of the input, and of each sentence the text and its entry.
    EXPECT_EQ(failEachAllocation([&] {
                  const std::unique_ptr<MessageBase> gps(read(bytes.data(), bytes.size()));
              }),
              6U);
}

TEST(FailingMemoryTest, ConstructionFromBytesPassesTheFailureOn) {
    const Bytes bytes = bytesOf(LONG_FIELDS_RMC);
    EXPECT_EQ(failEachAllocation([&] { GPSTraceMessage message(1, bytes.data(), bytes.size()); }),
              2U);
}

TEST(FailingMemoryTest, MessageThatCouldNotBeExtendedStillAnswers) {
    GPSTraceMessage message(1, PROPRIETARY);
    const std::string before = payloadOf(message);
    std::string payload = before;
    const auto extend = [&] {
        GPSTraceMessage extended = message;
        try {
            extended.addRecord(LONG_FIELDS_RMC);
        } catch (const std::bad_alloc&) {
            failingMemory::failAt(0);
            payload = payloadOf(extended);
            expectAnswers(extended, payload);
            // Either the sentence is held whole, or the message is what it was.
            EXPECT_TRUE(payload == before ||
                        payload.size() == before.size() + LONG_FIELDS_RMC.size());
            throw;
        }
    };
    EXPECT_GT(failEachAllocation(extend), 4U);
    expectAnswers(message, before);
}

TEST(FailingMemoryTest, SentenceWhoseFieldsCouldNotBeSplitIsSplitByTheNextCall) {
    GPSTraceMessage message(1, LONG_FIELDS_RMC);
    failingMemory::failAt(3);
    EXPECT_THROW(message.addRecord(LONG_FIELDS_RMC), std::bad_alloc);
    failingMemory::failAt(0);
    message.addRecord(LONG_FIELDS_RMC);
    EXPECT_EQ(message.getRMC().latitude, "4807.038" + ZEROS);
    EXPECT_EQ(message.getRMC().modeIndicator, "A");
}

TEST(FailingMemoryTest, CloneReturnsNothingAndLeavesTheMessage) {
    const GPSTraceMessage message = fullMessage();
    const std::string payload = payloadOf(message);
    const size_t failures =
        failEachAllocation([&] { const std::unique_ptr<GPSTraceMessage> copy(message.clone()); },
                           [&] { expectAnswers(message, payload); });
    EXPECT_GT(failures, 10U);
}

TEST(FailingMemoryTest, DecodingReturnsNothing) {
    const Bytes bytes = writtenBytes(fullMessage());
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    const size_t failures = failEachAllocation([&] {
        const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
        EXPECT_NE(decoded.message, nullptr);
    });
    EXPECT_GT(failures, 10U);
}

TEST(FailingMemoryTest, RefusedBytesBecomeAFailureAndNotAHalfMadeInvalidMessage) {
    const Bytes bytes = serialised(0, 0, "\n");
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
    const size_t failures = failEachAllocation([&] {
        const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
        EXPECT_EQ(decoded.message->getMsgID(), MSGID_INVALID);
        EXPECT_TRUE(decoded.error.has_value());
    });
    EXPECT_GE(failures, 4U);
}

TEST(FailingMemoryTest, RegistrationFailsWhole) {
    constexpr auto UNUSED_ID = static_cast<msgid_t>(61440);
    const MessageFactory::Reader reader = [](const uint8_t*, size_t) -> MessageBase* {
        return nullptr;
    };
    failingMemory::failAt(1);
    EXPECT_THROW(MessageFactory::registerReader(UNUSED_ID, reader), std::bad_alloc);
    failingMemory::failAt(0);
    const Bytes bytes = {0, 12, 0xF0, 0x00, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(MessageFactory::decode(bytes.data(), bytes.size()).error->getCause(),
              IM_INVALID_MSGID);
    EXPECT_TRUE(MessageFactory::registerReader(UNUSED_ID, reader));
}

TEST(FailingMemoryTest, TextsAreWholeOrNotAtAll) {
    GPSTraceMessage message = fullMessage();
    const MessageBase& base = message;
    const std::string line = base.toString();
    EXPECT_GE(failEachAllocation([&] { EXPECT_EQ(base.toString(), line); }), 2U);
    const std::string rdb = message.formatForRDB();
    EXPECT_GE(failEachAllocation([&] { EXPECT_EQ(message.formatForRDB(), rdb); }), 2U);
    const Bytes unreadable(40, 0xAB);
    const InvalidHandling handling(IMH_RETURN_INVALID_MESSAGE);
    const DecodedMessage decoded = MessageFactory::decode(unreadable.data(), unreadable.size());
    const std::string invalid = decoded.message->toString();
    EXPECT_GE(failEachAllocation([&] { EXPECT_EQ(decoded.message->toString(), invalid); }), 2U);
    EXPECT_GE(failEachAllocation(
                  [&] { const std::unique_ptr<MessageBase> copy(decoded.message->clone()); }),
              3U);
}

TEST(FailingMemoryTest, AccessorsPassTheFailureOn) {
    const GPSTraceMessage message = fullMessage();
    const std::string payload = payloadOf(message);
    const auto stillAnswers = [&] { expectAnswers(message, payload); };
    EXPECT_EQ(failEachAllocation([&] { message.getString(); }, stillAnswers), 1U);
    EXPECT_GT(failEachAllocation([&] { message.getRMC(); }, stillAnswers), 3U);
    EXPECT_GT(failEachAllocation([&] { message.getGGA(); }, stillAnswers), 3U);
}

TEST(FailingMemoryTest, WritingAndComparingNeedNone) {
    const GPSTraceMessage message = fullMessage();
    const GPSTraceMessage same = message;
    const MessageBase& base = message;
    Bytes room(base.getSize() + 2);
    EXPECT_EQ(failEachAllocation([&] {
                  uint8_t* pdest = room.data();
                  base.writeToByteArray(pdest, room.size(), false);
                  EXPECT_TRUE(message == same);
              }),
              0U);
}

TEST(FailingMemoryTest, PlainNumbersNeedNone) {
    if (FLT_EVAL_METHOD != 0 && FLT_EVAL_METHOD != 1) {
        GTEST_SKIP() << "With extended precision every number is left to strtod.";
    }
    // As long as plain conversion takes them; a string of libstdc++ would need an allocation.
    GPSTraceMessage message(3, "$GPRMC,123519,A,4807.03812345678,N,01131.0001234567,E,,,230394,,");
    message.addRecord("$GPGGA,123519,4807.03812345678,N,01131.0001234567,E,1,08,0.9,545.4,M");
    EXPECT_EQ(failEachAllocation([&] {
                  GPSTraceMessage::numeric_gprmc_t gprmc;
                  GPSTraceMessage::numeric_gpgga_t gpgga;
                  EXPECT_TRUE(message.getGPRMC(gprmc) && message.getGPGGA(gpgga));
                  EXPECT_EQ(gpgga.antennaAltitude, 545.4);
              }),
              0U);
}

TEST(FailingMemoryTest, OddNumbersPassTheFailureOnAndLeaveTheMessage) {
    const GPSTraceMessage message(
        4, "$GPRMC,  +00000000000000123519,A, +4807.0380000000000000,N,,E,,,,,,A*00");
    const std::string payload = payloadOf(message);
    EXPECT_GT(failEachAllocation(
                  [&] {
                      GPSTraceMessage::numeric_gprmc_t gprmc;
                      EXPECT_TRUE(message.getGPRMC(gprmc));
                      EXPECT_EQ(gprmc.timeUTC, 123519U);
                  },
                  [&] { expectAnswers(message, payload); }),
              0U);
}

}  // namespace failingMemoryTest
