// The bytes of serialised messages are the same on every processor: golden/messages.trace was
// written once and every build must reproduce it.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/support/messages.h"

namespace {

Bytes goldenFile() {
    std::ifstream file(VEXTRACE_SOURCE_DIR "/tests/golden/messages.trace", std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

std::vector<GPSTraceMessage> goldenMessages() {
    std::vector<GPSTraceMessage> messages;
    messages.emplace_back(0x0123456789ABCDEF, RMC_SENTENCE);
    messages.back().setHeaderReserved(0xFEDC);
    messages.back().addRecord(GGA_SENTENCE + "\r\n");

    messages.emplace_back(0xFFEEDDCCBBAA9988,
                          "$GNGGA,002153.000,3342.6618,N,11751.3858,W,1,10\r\n");
    messages.back().setHeaderReserved(0x0102);
    messages.back().addRecord("$PXYZE,\x01\x7F\x80\xFF\t*00\r\r\n");
    messages.back().addRecord("!AIVDM,1,1,,B,177KQJ5000G?tO`K>RA1wUbN0TKH,0*5C");
    messages.back().addRecord("$HCHDG,101.1,,,7.1,W*3C\n");

    messages.emplace_back();

    std::string longSentence = "$GPTXT,";
    for (int i = 0; i < 600; ++i) {
        longSentence += static_cast<char>('!' + i % 90);
    }
    messages.emplace_back(1, longSentence);
    return messages;
}

}  // namespace

TEST(GoldenTest, EveryProcessorWritesTheSameBytes) {
    Bytes written;
    for (const GPSTraceMessage& message : goldenMessages()) {
        const Bytes bytes = writtenBytes(message);
        written.insert(written.end(), bytes.begin(), bytes.end());
    }
    EXPECT_EQ(written, goldenFile());
}

TEST(GoldenTest, EveryProcessorReadsTheSameMessages) {
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    const Bytes file = goldenFile();
    size_t offset = 0;
    for (const GPSTraceMessage& expected : goldenMessages()) {
        const DecodedMessage decoded =
            MessageFactory::decode(file.data() + offset, file.size() - offset);
        offset += decoded.bytesTaken;
        if (expected.getString().empty()) {
            ASSERT_TRUE(decoded.error.has_value());
            EXPECT_STREQ(decoded.error->what(), "GPSTraceMessage: No NMEA code found.");
            continue;
        }
        ASSERT_NE(decoded.message, nullptr);
        EXPECT_TRUE(expected == *decoded.message);
        EXPECT_EQ(decoded.message->getTimeStamp(), expected.getTimeStamp());
        EXPECT_EQ(decoded.message->getHeaderReserved(), expected.getHeaderReserved());
    }
    EXPECT_EQ(offset, file.size());
}
