#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/InvalidMessageException.h"
#include "tests/support/InvalidHandling.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

using namespace std::string_literals;

namespace {

// The reader itself, which unlike MessageFactory takes bytes of any length and id.
MessageFactory::Reader gpsReader() {
    EXPECT_TRUE(GPSTraceMessage::registerMessage());
    return MessageFactory::getReader(MSGID_GPS);
}

constexpr timeStamp_t TIME_STAMP = 0x0123456789ABCDEF;

std::unique_ptr<MessageBase> readFrom(const uint8_t* psrc, size_t len) {
    return std::unique_ptr<MessageBase>(gpsReader()(psrc, len));
}

// Reads from memory that ends with the bytes, so that a sanitizer sees every read behind them.
std::unique_ptr<MessageBase> readFrom(const Bytes& bytes) {
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), exact.get());
    return readFrom(exact.get(), bytes.size());
}

// The stored sentences of the message read from a payload.
std::string sentencesIn(const std::string& payload) {
    return payloadOf(*readFrom(serialised(0, 0, payload)));
}

template <class Read>
void expectNoSentence(const Read& read) {
    try {
        read();
        ADD_FAILURE() << "no exception";
    } catch (const InvalidMessageException& error) {
        EXPECT_EQ(error.getCause(), IM_MISC);
        EXPECT_STREQ(error.what(), "GPSTraceMessage: No NMEA code found.");
        EXPECT_EQ(error.getInvalidValue(), 0);
    }
}

void expectNoSentenceIn(const Bytes& bytes) {
    expectNoSentence([&] { readFrom(bytes); });
}

const GPSTraceMessage& asGPS(const MessageBase& message) {
    return dynamic_cast<const GPSTraceMessage&>(message);
}

size_t sizeOf(const MessageBase& message) {
    return message.getSize();
}

GPSTraceMessage twoSentences() {
    GPSTraceMessage message(TIME_STAMP, "$GPRMC,A");
    message.addRecord("$GPGGA,B");
    message.setHeaderReserved(0xFEDC);
    return message;
}

constexpr char NO_ROOM[] = "MessageBase: No room for the message.";
constexpr char TOO_LONG[] = "MessageBase: The message is too long for its size field.";

// Writing must be refused with the value, and touch neither the bytes nor the position.
void expectRefused(const MessageBase& message, size_t room, uint16_t value,
                   const char* text = NO_ROOM) {
    const Bytes before(room, 0xA5);
    Bytes bytes = before;
    uint8_t* pdest = bytes.data();
    try {
        message.writeToByteArray(pdest, room, false);
        ADD_FAILURE() << "no exception";
    } catch (const InvalidMessageException& error) {
        EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
        EXPECT_EQ(error.getInvalidValue(), value);
        EXPECT_STREQ(error.what(), text);
    }
    EXPECT_EQ(bytes, before);
    EXPECT_EQ(pdest, bytes.data());
}

GPSTraceMessage messageOfSize(size_t size) {
    return {TIME_STAMP, std::string(size - 12 - 1, 'x')};
}

}  // namespace

TEST(GPSTraceMessageBinaryTest, SizeCountsHeaderBehindItsSizeFieldAndSentences) {
    EXPECT_EQ(sizeOf(GPSTraceMessage()), 12U);
    EXPECT_EQ(sizeOf(GPSTraceMessage(1, "")), 13U);
    EXPECT_EQ(sizeOf(GPSTraceMessage(1, "$GPRMC,A")), 21U);
    EXPECT_EQ(sizeOf(twoSentences()), 30U);
}

TEST(GPSTraceMessageBinaryTest, SizeGrowsWithEverySentenceThatIsKept) {
    GPSTraceMessage message(1, "$GPRMC,A");
    message.addRecord("$PGRME,15.0,M");
    EXPECT_EQ(sizeOf(message), 12U + 9U + 14U);
    message.addRecord("$GNRMC,a longer one that is dropped");
    EXPECT_EQ(sizeOf(message), 12U + 9U + 14U);
}

TEST(GPSTraceMessageBinaryTest, WritesHeaderAndSentencesInOrderOfTheirCodes) {
    const Bytes header = {0x00, 0x1E, 0x00, 0x16, 0xFE, 0xDC, 0x01,
                          0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
    Bytes expected = header;
    for (const char c : "$GPGGA,B\n$GPRMC,A\n"s) {
        expected.push_back(static_cast<uint8_t>(c));
    }
    EXPECT_EQ(writtenBytes(twoSentences()), expected);
}

TEST(GPSTraceMessageBinaryTest, WritesTheHeaderAloneWithoutSentences) {
    const Bytes expected = {0, 12, 0, 22, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(writtenBytes(GPSTraceMessage()), expected);
}

TEST(GPSTraceMessageBinaryTest, WritesSentencesOfEveryCode) {
    GPSTraceMessage message(1, "$PGRME,15.0,M\r\n");
    message.addRecord("$GLGSV,3,1\r\n");
    message.addRecord("$HCHDG,101.1");
    message.addRecord("");
    message.addRecord("free text");
    EXPECT_EQ(payloadOf(message), "\n$GPGSV,3,1\r\n$HCHDG,101.1\n$PGRME,15.0,M\r\nfree text\n");
}

TEST(GPSTraceMessageBinaryTest, WritesNulBytesAndBytesOfEveryValue) {
    std::string sentence = "$GPRMC";
    for (int c = 0; c < 256; ++c) {
        sentence += static_cast<char>(c);
    }
    EXPECT_EQ(payloadOf(GPSTraceMessage(1, sentence)), sentence + '\n');
}

TEST(GPSTraceMessageBinaryTest, WritesTheSentenceWithoutLineFeedRightBeforeTheNext) {
    GPSTraceMessage message(1, "$G");
    message.addRecord("$GPRMC,A");
    EXPECT_EQ(payloadOf(message), "$GP$GPRMC,A\n");
    EXPECT_EQ(sentencesIn(payloadOf(message)), "$GP$GPRMC,A\n");
}

TEST(GPSTraceMessageBinaryTest, SizeWriteAndReadAgree) {
    GPSTraceMessage message = twoSentences();
    for (const std::string& record : {"$PGRME,15.0,M\r\n"s, "x"s, "$GPGSV"s, GGA_SENTENCE}) {
        message.addRecord(record);
        const Bytes bytes = writtenBytes(message);
        EXPECT_EQ(bytes.size(), sizeOf(message) + 2);
        const std::unique_ptr<MessageBase> back = readFrom(bytes);
        EXPECT_EQ(back->getSize(), sizeOf(message));
        EXPECT_EQ(writtenBytes(*back), bytes);
    }
}

TEST(GPSTraceMessageBinaryTest, AdvancesPastWhatItWroteAndLeavesTheRest) {
    const GPSTraceMessage gps = twoSentences();
    const MessageBase& message = gps;
    Bytes bytes(3 + 32 + 5, 0xA5);
    uint8_t* pdest = bytes.data() + 3;
    EXPECT_EQ(message.writeToByteArray(pdest, 32 + 5, false), 30U);
    EXPECT_EQ(pdest, bytes.data() + 3 + 32);

    Bytes expected(3, 0xA5);
    const Bytes alone = writtenBytes(message);
    expected.insert(expected.end(), alone.begin(), alone.end());
    expected.insert(expected.end(), 5, 0xA5);
    EXPECT_EQ(bytes, expected);
}

TEST(GPSTraceMessageBinaryTest, WritesTheSameBytesWhateverSyncSays) {
    const GPSTraceMessage gps = twoSentences();
    const MessageBase& message = gps;
    Bytes bytes(32);
    uint8_t* pdest = bytes.data();
    EXPECT_EQ(message.writeToByteArray(pdest, bytes.size(), true), 30U);
    EXPECT_EQ(bytes, writtenBytes(message));
}

TEST(GPSTraceMessageBinaryTest, AcceptsExactRoomAndRefusesOneByteLess) {
    const GPSTraceMessage gps = twoSentences();
    const MessageBase& message = gps;
    Bytes bytes(32);
    uint8_t* pdest = bytes.data();
    EXPECT_EQ(message.writeToByteArray(pdest, 32, false), 30U);
    expectRefused(message, 31, 31);
    expectRefused(message, 14, 14);
    expectRefused(message, 0, 0);
}

TEST(GPSTraceMessageBinaryTest, WritesTheLongestMessageOfTheSizeField) {
    const GPSTraceMessage message = messageOfSize(65535);
    const Bytes bytes = writtenBytes(message);
    EXPECT_EQ(bytes.size(), 65537U);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xFF);
    EXPECT_EQ(*rebuild(bytes), message);
    expectRefused(message, 65536, 65535);
}

TEST(GPSTraceMessageBinaryTest, RefusesAMessageTooLongForTheSizeField) {
    expectRefused(messageOfSize(65536), 65538, 65535, TOO_LONG);
    expectRefused(messageOfSize(65536), 100000, 65535, TOO_LONG);
}

TEST(GPSTraceMessageBinaryTest, ReturnsItsOwnSizeWhateverADerivedTypeSays) {
    class WithTrailer : public GPSTraceMessage {
    public:
        using GPSTraceMessage::GPSTraceMessage;
        size_t getSize() const override { return 12 + 9 + 4; }
    };
    const WithTrailer derived(TIME_STAMP, "$GPRMC,A");
    const MessageBase& message = derived;
    Bytes bytes(27, 0xA5);
    uint8_t* pdest = bytes.data();
    EXPECT_EQ(message.writeToByteArray(pdest, bytes.size(), false), 21U);
    EXPECT_EQ(pdest, bytes.data() + 23);
    // The header is the base's, which asks the whole message.
    EXPECT_EQ(bytes[1], 25);
    expectRefused(message, 26, 26);
}

TEST(GPSTraceMessageBinaryTest, ReadsTimeStampAndReservedWordBigEndian) {
    Bytes bytes = serialised(0x1234, 258, "$GPRMC,A\n");
    EXPECT_EQ((Bytes(bytes.begin() + 4, bytes.begin() + 14)),
              (Bytes{0x12, 0x34, 0, 0, 0, 0, 0, 0, 1, 2}));
    std::unique_ptr<MessageBase> message = readFrom(bytes);
    EXPECT_EQ(message->getTimeStamp(), 258U);
    EXPECT_EQ(message->getHeaderReserved(), 0x1234);

    message = readFrom(serialised(0xFEDC, 0x8123456789ABCDEF, "$GPRMC,A\n"));
    EXPECT_EQ(message->getTimeStamp(), 0x8123456789ABCDEF);
    EXPECT_EQ(message->getHeaderReserved(), 0xFEDC);
}

TEST(GPSTraceMessageBinaryTest, TakesNothingElseFromTheHeader) {
    Bytes bytes = serialised(1, TIME_STAMP, "$GPRMC,A\n");
    const Bytes wrong = {0xFF, 0xEE, 0x80, 0x04};
    std::copy(wrong.begin(), wrong.end(), bytes.begin());
    const std::unique_ptr<MessageBase> message = readFrom(bytes);
    EXPECT_EQ(message->getMsgID(), MSGID_GPS);
    EXPECT_EQ(message->getMbnr(), 0U);
    EXPECT_EQ(message->getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(payloadOf(asGPS(*message)), "$GPRMC,A\n");
}

TEST(GPSTraceMessageBinaryTest, SplitsThePayloadAtLineFeeds) {
    const struct {
        std::string payload;
        std::string sentences;
    } cases[] = {
        {"$GPRMC,A\n", "$GPRMC,A\n"},
        {"$GPRMC,A", "$GPRMC,A\n"},
        {"x", "x\n"},
        {"\n\n$GPRMC,x\r\n\n$GPGGA,y", "$GPGGA,y\n$GPRMC,x\r\n"},
        {"\n\n\n$GPRMC,x\n\n\n\n$GPGGA,y\n\n\n", "$GPGGA,y\n$GPRMC,x\n"},
        {"$GPRMC,x\r$GPGGA,y\n", "$GPRMC,x\r$GPGGA,y\n"},
        {"\r\n", "\r\n"},
        {"$GPRMC,x\n\r\n", "\r\n$GPRMC,x\n"},
        {"$GPRMC,first\n$GPRMC,second\n", "$GPRMC,first\n"},
        {"$GPRMC,first\n$GNRMC,second\n$GPGGA,y\n$GLGGA,z\n", "$GPGGA,y\n$GPRMC,first\n"},
        {"$GNRMC,x\n$GLGSV,y\n", "$GPGSV,y\n$GPRMC,x\n"},
        {"$G\n$G\n", "$GP"},
        {" \n", " \n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sentencesIn(c.payload), c.sentences) << testing::PrintToString(c.payload);
    }
}

TEST(GPSTraceMessageBinaryTest, StopsReadingAtANul) {
    EXPECT_EQ(sentencesIn("$GPRMC,A\0B\n$GPGGA,C\n"s), "$GPRMC,A\n");
    EXPECT_EQ(sentencesIn("$GPRMC,A\n\0$GPGGA,C\n"s), "$GPRMC,A\n");
    EXPECT_EQ(sentencesIn("$GPRMC,A\n$GP\0GGA,C\n"s), "$GP\n$GPRMC,A\n");
    EXPECT_EQ(sentencesIn("\n$GPRMC,A\0\n"s), "$GPRMC,A\n");
}

TEST(GPSTraceMessageBinaryTest, ANulInAStoredSentenceCutsWhatIsReadBack) {
    const GPSTraceMessage message(TIME_STAMP, "$GPRMC,A\0B"s);
    EXPECT_EQ(payloadOf(message), "$GPRMC,A\0B\n"s);
    EXPECT_EQ(payloadOf(*rebuild(writtenBytes(message))), "$GPRMC,A\n");
}

TEST(GPSTraceMessageBinaryTest, ThrowsWithoutAnySentence) {
    for (const std::string& payload :
         {""s, "\n"s, "\n\n"s, "\0"s, "\0$GPRMC,A\n"s, "\n\n\0$GPRMC,A\n"s, "\0"s + RMC_SENTENCE}) {
        SCOPED_TRACE(testing::PrintToString(payload));
        expectNoSentenceIn(serialised(1, TIME_STAMP, payload));
    }
}

TEST(GPSTraceMessageBinaryTest, ThrowsOnAnIncompleteHeader) {
    const Bytes whole(14, '$');
    for (size_t len = 0; len <= whole.size(); ++len) {
        SCOPED_TRACE(len);
        expectNoSentenceIn(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(len)));
        expectNoSentence([&] { readFrom(whole.data(), len); });
    }
    expectNoSentence([] { readFrom(nullptr, 0); });
}

TEST(GPSTraceMessageBinaryTest, ThrowsWhateverTheHandlingOfInvalidMessages) {
    for (const invalidMsgHandling_t handling : {IMH_RETURN_NULL, IMH_RETURN_INVALID_MESSAGE}) {
        const InvalidHandling inForce(handling);
        expectNoSentenceIn(serialised(1, TIME_STAMP, "\n"));
    }
}

TEST(GPSTraceMessageBinaryTest, ReadsOnlyTheBytesItIsGiven) {
    const std::string payload = "$GPRMC,A\n$GPGGA,B\n";
    const Bytes whole = serialised(0x1234, TIME_STAMP, payload);
    for (size_t taken = 1; taken <= payload.size(); ++taken) {
        const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(14 + taken));
        const std::string first = payload.substr(0, std::min<size_t>(taken, 8)) + '\n';
        const std::string second =
            taken < 10 ? "" : payload.substr(9, std::min<size_t>(taken - 9, 8)) + '\n';
        GPSTraceMessage expected(TIME_STAMP, first);
        if (!second.empty()) {
            expected.addRecord(second);
        }
        EXPECT_EQ(payloadOf(*readFrom(part)), payloadOf(expected)) << taken;
        EXPECT_EQ(payloadOf(*readFrom(whole.data(), 14 + taken)), payloadOf(expected)) << taken;
    }
}

TEST(GPSTraceMessageBinaryTest, LeavesTheInputAsItWas) {
    const std::string payload = "$GNRMC,A\n\n$GPGGA,B\n";
    const Bytes bytes = serialised(0x1234, TIME_STAMP, payload);
    readFrom(bytes.data(), bytes.size());
    EXPECT_EQ(bytes, serialised(0x1234, TIME_STAMP, payload));
}

TEST(GPSTraceMessageBinaryTest, OneSentenceLeavesTheFieldsEmpty) {
    for (const std::string& sentence : {RMC_SENTENCE, GGA_SENTENCE}) {
        const std::unique_ptr<GPSTraceMessage> message =
            rebuild(serialised(1, TIME_STAMP, "\n" + sentence + "\n\n"));
        EXPECT_EQ(fieldTexts(message->getRMC()), Texts(12));
        EXPECT_EQ(fieldTexts(message->getGGA()), Texts(14));
    }
}

TEST(GPSTraceMessageBinaryTest, TwoSentencesFillTheFieldsOfBoth) {
    const std::unique_ptr<GPSTraceMessage> message =
        rebuild(serialised(1, TIME_STAMP, RMC_SENTENCE + "\n" + GGA_SENTENCE + "\n"));
    EXPECT_EQ(fieldTexts(message->getRMC()),
              (Texts{"123519", "A", "4807.038", "N", "01131.000", "E", "022.4", "084.4", "230394",
                     "003.1", "W*6A\n", ""}));
    EXPECT_EQ(fieldTexts(message->getGGA()),
              (Texts{"123519", "4807.038", "N", "01131.000", "E", "1", "08", "0.9", "545.4", "M",
                     "46.9", "M", "", ""}));
}

TEST(GPSTraceMessageBinaryTest, ASecondSentenceThatIsDroppedStillFillsTheFields) {
    const std::unique_ptr<GPSTraceMessage> message =
        rebuild(serialised(1, TIME_STAMP, "$GPRMC,1,A\n$GPRMC,2,V\n"));
    EXPECT_EQ(message->getRMC().timeUTC, "1");
}

TEST(GPSTraceMessageBinaryTest, ReadsBackWhatItWrote) {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE + "\r\n");
    message.setHeaderReserved(0xFEDC);
    message.addRecord(GGA_SENTENCE);
    message.addRecord("$PGRME,15.0,M\r\r\n");
    message.addRecord("\xC2\xB0");
    const std::unique_ptr<GPSTraceMessage> back = rebuild(writtenBytes(message));
    EXPECT_EQ(*back, message);
    EXPECT_EQ(back->getTimeStamp(), TIME_STAMP);
    EXPECT_EQ(back->getHeaderReserved(), 0xFEDC);
    EXPECT_EQ(fieldTexts(back->getRMC()), fieldTexts(message.getRMC()));
    EXPECT_EQ(fieldTexts(back->getGGA()), fieldTexts(message.getGGA()));
}

TEST(GPSTraceMessageBinaryTest, LosesALoneLineFeedOnTheWayBack) {
    GPSTraceMessage message(TIME_STAMP, "");
    expectNoSentenceIn(writtenBytes(message));
    message.addRecord("$GPRMC,A");
    EXPECT_EQ(payloadOf(message), "\n$GPRMC,A\n");
    EXPECT_EQ(payloadOf(*rebuild(writtenBytes(message))), "$GPRMC,A\n");
}

TEST(GPSTraceMessageBinaryTest, SplitsATextOfSeveralLinesOnTheWayBack) {
    const GPSTraceMessage message(TIME_STAMP, "$GPRMC,A\n$GPGGA,B");
    EXPECT_EQ(payloadOf(message), "$GPRMC,A\n$GPGGA,B\n");
    EXPECT_EQ(payloadOf(*rebuild(writtenBytes(message))), "$GPGGA,B\n$GPRMC,A\n");
}

TEST(GPSTraceMessageBinaryTest, LeavesAScanOfTheCallerAlone) {
    std::string words = "first,second";
    EXPECT_STREQ(std::strtok(words.data(), ","), "first");
    readFrom(serialised(1, TIME_STAMP, "$GPRMC,A\n$GPGGA,B\n"));
    EXPECT_STREQ(std::strtok(nullptr, ","), "second");
}

TEST(GPSTraceMessageBinaryTest, TwoThreadsReadAtOnce) {
    std::atomic<int> wrong{0};
    std::atomic<int> waiting{2};
    const auto readAgainAndAgain = [&](const std::string& payload) {
        const Bytes bytes = serialised(1, TIME_STAMP, payload);
        const std::unique_ptr<MessageBase> expected = readFrom(bytes);
        --waiting;
        while (waiting > 0) {
            std::this_thread::yield();
        }
        for (int i = 0; i < 5000; ++i) {
            wrong += *readFrom(bytes) == *expected ? 0 : 1;
        }
        EXPECT_EQ(payloadOf(*expected), payload);
    };
    std::thread other(readAgainAndAgain, "$GPGGA,A\n$GPGSV,B\n$GPRMC,C\n");
    readAgainAndAgain("$GPGLL,D\n$GPVTG,E\n$PGRME,F\n");
    other.join();
    EXPECT_EQ(wrong, 0);
}
