// How many allocations each operation takes. The counts are part of what the library is for: a
// receiver sends a dozen sentences per second, and loggers run for years.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/serialise.h"
#include "tests/memory/failingMemory.h"
#include "tests/memory/longSentences.h"
#include "tests/support/InvalidHandling.h"
#include "tests/support/TestMessage.h"
#include "tests/support/messages.h"

using vextrace::appendSerialised;
using vextrace::serialise;

namespace allocationsTest {

// Fields short enough that every standard library's strings keep them inside themselves.
const std::string RMC =
    "$GNRMC,123519.00,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*07\r\n";
const std::string GGA = "$GNGGA,123519.00,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n";
const std::string GSV = "$GPGSV,3,1,11,03,03,111,00,04,15,270,00,06,01,010,00,13,06,292,00*74\r\n";
const std::string OTHER_GSV = "$GLGSV,2,1,07,66,01,001,30,67,02,002,31*6D\r\n";
const std::string PROPRIETARY = "$PGRME,15.0,M,45.0,M,25.0,M*1C\r\n";

GPSTraceMessage fix() {
    GPSTraceMessage message(258, RMC);
    message.addRecord(GGA);
    message.addRecord(GSV);
    return message;
}

struct Operation {
    const char* name;
    size_t allocations;
    std::function<void()> run;
};

template <class Run>
size_t allocationsOf(const Run& run) {
    const size_t before = failingMemory::allocations();
    run();
    return failingMemory::allocations() - before;
}

template <size_t COUNT>
void expectAllocations(const Operation (&operations)[COUNT]) {
    for (const Operation& operation : operations) {
        EXPECT_EQ(allocationsOf(operation.run), operation.allocations) << operation.name;
    }
}

class AllocationsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!failingMemory::keepsShortTextsInside()) {
            GTEST_SKIP() << "Strings of this compiler take an allocation for every text.";
        }
    }
};

// A sentence takes two: its text, and the map's entry with the code.
TEST_F(AllocationsTest, BuildingTakesTwoForEachSentenceThatIsStored) {
    const std::vector<uint8_t> bytes = bytesOf(RMC);
    GPSTraceMessage empty;
    GPSTraceMessage built(258, RMC);
    GPSTraceMessage message = fix();
    const std::string longer(300, 'x');
    expectAllocations({
        {"a message without sentences", 0, [] { const GPSTraceMessage made; }},
        {"from a text", 2, [] { const GPSTraceMessage made(258, RMC); }},
        {"from a long text", 2, [&] { const GPSTraceMessage made(258, longer); }},
        {"from bytes", 2, [&] { const GPSTraceMessage made(258, bytes.data(), bytes.size()); }},
        {"addRecord of the first sentence", 2, [&] { empty.addRecord(GGA); }},
        {"addRecord that splits two sentences", 2, [&] { built.addRecord(GGA); }},
        {"addRecord of another sentence", 2, [&] { message.addRecord(PROPRIETARY); }},
        {"a text too short for the heap takes its entry alone", 1,
         [&] { message.addRecord("short"); }},
    });
}

TEST_F(AllocationsTest, ASentenceOfAHeldCodeTakesNone) {
    GPSTraceMessage message = fix();
    GPSTraceMessage odd(258, "$GPRMC");
    odd.addRecord("$GPGGA,,,,,,,,,,,,,,*00");
    GPSTraceMessage longFields(258, LONG_RMC);
    longFields.addRecord(LONG_GGA);
    const std::string longer = "$GNRMC," + std::string(300, '1');
    expectAllocations({
        {"the same RMC", 0, [&] { message.addRecord(RMC); }},
        {"the same GGA", 0, [&] { message.addRecord(GGA); }},
        {"another GSV", 0, [&] { message.addRecord(OTHER_GSV); }},
        {"a long RMC", 0, [&] { message.addRecord(longer); }},
        {"where no field can be split", 0, [&] { odd.addRecord(RMC); }},
        {"where fields are on the heap", 0, [&] { longFields.addRecord(LONG_RMC); }},
    });
}

TEST_F(AllocationsTest, AskingTakesNone) {
    const GPSTraceMessage message = fix();
    const GPSTraceMessage same = message;
    GPSTraceMessage::numeric_gprmc_t gprmc;
    GPSTraceMessage::numeric_gpgga_t gpgga;
    size_t length = 0;
    expectAllocations({
        {"getSentence", 0, [&] { length += message.getSentence("$GPGSV").size(); }},
        {"getSentence of none", 0, [&] { length += message.getSentence("$GPVTG").size(); }},
        {"getSentences", 0,
         [&] {
             for (const auto& [code, sentence] : message.getSentences()) {
                 length += code.size() + sentence.size();
             }
         }},
        {"hasNmeaDataType", 0,
         [&] { length += message.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPGGA) ? 1U : 0U; }},
        {"getGPRMC", 0, [&] { message.getGPRMC(gprmc); }},
        {"getGPGGA", 0, [&] { message.getGPGGA(gpgga); }},
        {"getRMC of short fields", 0, [&] { length += message.getRMC().latitude.size(); }},
        {"getGGA of short fields", 0, [&] { length += message.getGGA().latitude.size(); }},
        {"splitRMC of short fields", 0, [&] { length += message.splitRMC().latitude.size(); }},
        {"splitGGA of short fields", 0, [&] { length += message.splitGGA().latitude.size(); }},
        {"getString", 1, [&] { length += message.getString().size(); }},
        {"getSourceChannel", 0, [&] { length += message.getSourceChannel().size(); }},
        {"operator==", 0, [&] { length += message == same ? 1U : 0U; }},
    });
    EXPECT_EQ(gpgga.antennaAltitude, 545.4);
    EXPECT_EQ(gprmc.dateUTC, 230394U);
    EXPECT_GT(length, 0U);
}

TEST_F(AllocationsTest, CopiesTakeTwoForEachSentenceAndMovesNone) {
    const GPSTraceMessage message = fix();
    GPSTraceMessage moved = message;
    GPSTraceMessage assigned;
    GPSTraceMessage other(1, "$GPVTG,,,,,,,,,N*30");
    expectAllocations({
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it is what is counted
        {"copy", 6, [&] { const GPSTraceMessage copy(message); }},
        {"clone", 7, [&] { const std::unique_ptr<GPSTraceMessage> copy(message.clone()); }},
        {"assignment", 6, [&] { assigned = message; }},
        {"assignment over the same sentences", 6, [&] { assigned = message; }},
        {"move", 0, [&] { const GPSTraceMessage taken(std::move(moved)); }},
        {"move assignment", 0, [&] { other = std::move(assigned); }},
        {"swap", 0, [&] { std::swap(other, assigned); }},
    });
}

TEST_F(AllocationsTest, MovesOfWhatABaseKeepsTakeNone) {
    TestMessage message(MSGID_CAN, 1);
    message.text.assign(100, 'x');
    message.bytes.assign(100, 0x42);
    TestMessage assigned(MSGID_CAN, 2);
    InvalidMessageException error(IM_MISC, LONG_RMC.c_str());
    InvalidMessageException assignedError;
    expectAllocations({
        {"move assignment of a message", 0, [&] { assigned = std::move(message); }},
        {"move of a message", 0, [&] { const TestMessage taken(std::move(assigned)); }},
        {"move assignment of an error", 0, [&] { assignedError = std::move(error); }},
        {"move of an error", 0,
         [&] { const InvalidMessageException taken(std::move(assignedError)); }},
        {"an error of a short text", 0, [] { const InvalidMessageException made(IM_MISC, "odd"); }},
    });
}

TEST_F(AllocationsTest, WritingTakesNoneAndSerialisingOne) {
    const GPSTraceMessage message = fix();
    const MessageBase& base = message;
    Bytes room(base.getSize() + 2);
    Bytes appended;
    appended.reserve(room.size());
    expectAllocations({
        {"getSize", 0, [&] { EXPECT_GT(base.getSize(), 0U); }},
        {"writeToByteArray", 0,
         [&] {
             uint8_t* pdest = room.data();
             base.writeToByteArray(pdest, room.size(), false);
         }},
        {"serialise", 1, [&] { EXPECT_EQ(serialise(message).size(), room.size()); }},
        {"appendSerialised with room", 0, [&] { appendSerialised(message, appended); }},
    });
    EXPECT_EQ(appended, room);
}

// A text at least doubles its room whenever it grows. How much it begins with, and so how many
// allocations it takes, is the standard library's affair.
TEST_F(AllocationsTest, TextsTakeNoMoreThanAStringThatDoublesItsRoom) {
    GPSTraceMessage message = fix();
    const MessageBase& base = message;
    size_t length = 0;
    EXPECT_EQ(allocationsOf([] { GPSTraceMessage().formatForRDB(); }), 0U);
    EXPECT_LE(allocationsOf([&] { length = base.toString().size(); }), 5U);
    EXPECT_EQ(length, 252U);
    EXPECT_LE(allocationsOf([&] { length = message.formatForRDB().size(); }), 2U);
    EXPECT_EQ(length, 33U);
    EXPECT_LE(allocationsOf([&] { length = message.rdbText().size(); }), 2U);
    EXPECT_EQ(length, 33U);
}

TEST_F(AllocationsTest, DecodingTakesTheMessageACopyOfTheInputAndItsSentences) {
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    const Bytes one = serialise(GPSTraceMessage(258, RMC));
    const Bytes three = serialise(fix());
    Bytes damaged = three;
    damaged[1] = 3;
    damaged[0] = 0;
    expectAllocations({
        {"frame", 0,
         [&] {
             for (size_t len = 0; len <= three.size(); ++len) {
                 MessageFactory::frame(three.data(), len);
             }
             MessageFactory::frame(damaged.data(), damaged.size());
         }},
        {"getReader", 0, [] { EXPECT_NE(MessageFactory::getReader(MSGID_GPS), nullptr); }},
        {"registerMessage again", 0, [] { EXPECT_TRUE(GPSTraceMessage::registerMessage()); }},
        {"decode of one sentence", 1 + 1 + 2,
         [&] { MessageFactory::decode(one.data(), one.size()); }},
        {"decode of three sentences", 1 + 1 + 6,
         [&] { MessageFactory::decode(three.data(), three.size()); }},
    });
}

TEST_F(AllocationsTest, RegisteringTakesOneAndTakingBackNone) {
    constexpr auto ID = static_cast<msgid_t>(0xC010);
    const MessageFactory::Reader reader = [](const uint8_t*, size_t) -> MessageBase* {
        return nullptr;
    };
    expectAllocations({
        {"registerReader", 1, [&] { MessageFactory::registerReader(ID, reader); }},
        {"unregisterReader", 0, [&] { MessageFactory::unregisterReader(ID, reader); }},
        {"registerReader again", 0, [&] { MessageFactory::registerReader(ID, reader); }},
    });
}

}  // namespace allocationsTest
