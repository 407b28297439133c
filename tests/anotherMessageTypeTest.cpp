// The example of another message type, which docs/architecture.md names, works beside the GPS
// message.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "examples/TemperatureMessage.h"
#include "tests/support/messages.h"

namespace {

// 298.2 K at sensor 0x1234.
TemperatureMessage warm() {
    TemperatureMessage message(0x0102030405060708, 0x1234, 2982);
    message.setHeaderReserved(0x090A);
    return message;
}

const Bytes WARM_BYTES = {0x00, 0x10, 0x00, 0x87, 0x09, 0x0A, 0x01, 0x02, 0x03,
                          0x04, 0x05, 0x06, 0x07, 0x08, 0x12, 0x34, 0x0B, 0xA6};

}  // namespace

TEST(AnotherMessageTypeTest, WritesItsPayloadBehindTheHeader) {
    EXPECT_EQ(writtenBytes(warm()), WARM_BYTES);
}

TEST(AnotherMessageTypeTest, IsRefusedWholeWhereThereIsNoRoom) {
    Bytes room(17, 0xEE);
    uint8_t* pdest = room.data();
    EXPECT_THROW(warm().writeToByteArray(pdest, room.size(), false), InvalidMessageException);
    EXPECT_EQ(pdest, room.data());
    EXPECT_EQ(room, Bytes(17, 0xEE));
}

TEST(AnotherMessageTypeTest, ComesBackThroughTheFactoryBesideGPSMessages) {
    ASSERT_TRUE(TemperatureMessage::registerMessage());
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    Bytes bytes = writtenBytes(GPSTraceMessage(1, RMC_SENTENCE));
    const size_t begin = bytes.size();
    bytes.insert(bytes.end(), WARM_BYTES.begin(), WARM_BYTES.end());

    const DecodedMessage gps = MessageFactory::decode(bytes.data(), bytes.size());
    EXPECT_NE(dynamic_cast<const GPSTraceMessage*>(gps.message.get()), nullptr);
    EXPECT_EQ(gps.bytesTaken, begin);

    const DecodedMessage decoded =
        MessageFactory::decode(bytes.data() + begin, bytes.size() - begin);
    ASSERT_FALSE(decoded.error);
    EXPECT_EQ(decoded.bytesTaken, WARM_BYTES.size());
    const auto* message = dynamic_cast<const TemperatureMessage*>(decoded.message.get());
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getSensor(), 0x1234);
    EXPECT_EQ(message->getDecikelvin(), 2982);
    EXPECT_TRUE(*message == warm());
    EXPECT_EQ(writtenBytes(*message), WARM_BYTES);
}

TEST(AnotherMessageTypeTest, ReaderRefusesAPayloadOfAnotherLength) {
    ASSERT_TRUE(TemperatureMessage::registerMessage());
    Bytes bytes = WARM_BYTES;
    bytes[1] = 0x11;
    bytes.push_back(0);
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    ASSERT_TRUE(decoded.error);
    EXPECT_EQ(decoded.error->getCause(), IM_INVALID_LEN);
    EXPECT_EQ(decoded.error->getInvalidValue(), 5);
    EXPECT_EQ(decoded.message, nullptr);
    EXPECT_EQ(decoded.bytesTaken, 19U);
}

TEST(AnotherMessageTypeTest, PrintsItsTraceLine) {
    std::ostringstream os;
    warm().print(os) << '.';
    EXPECT_EQ(os.str(), "0102030405060708 00000000  TEMPERATURE | sensor 4660 298.2 K.");
    EXPECT_EQ(warm().toString(), "0102030405060708 00000000  TEMPERATURE | sensor 4660 298.2 K");
}

TEST(AnotherMessageTypeTest, NamesItsSource) {
    TemperatureMessage message = warm();
    message.setMbnr(2);
    EXPECT_EQ(message.getSourceChannel(), "TEMPERATURE");
    EXPECT_EQ(static_cast<const MessageBase&>(message).getSourceChannelID(), 0x200001234U);
}

TEST(AnotherMessageTypeTest, EqualsWhatSaysTheSame) {
    const TemperatureMessage message = warm();
    const std::unique_ptr<MessageBase> copy(message.clone());
    EXPECT_TRUE(message == *copy);
    EXPECT_TRUE(message == TemperatureMessage(0, 0x1234, 2982));
    EXPECT_FALSE(message == TemperatureMessage(0, 0x1235, 2982));
    EXPECT_FALSE(message == TemperatureMessage(0, 0x1234, 2983));
}

// Two types of message are compared through the base; directly the call would be ambiguous in
// C++20.
TEST(AnotherMessageTypeTest, DiffersFromAMessageOfAnotherType) {
    const GPSTraceMessage gps(1, RMC_SENTENCE);
    const TemperatureMessage message = warm();
    EXPECT_FALSE(static_cast<const MessageBase&>(message) == gps);
    EXPECT_FALSE(static_cast<const MessageBase&>(gps) == message);
}
