// A process in which another reader holds the id of the GPS message from the beginning, and nothing
// else has been set or registered.
#include <gtest/gtest.h>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/messages.h"

namespace {

MessageBase* readNothing(const uint8_t* /*psrc*/, size_t /*len*/) {
    return nullptr;
}

DecodedMessage decoded() {
    const Bytes bytes = serialised(0, 258, RMC_SENTENCE + '\n');
    return MessageFactory::decode(bytes.data(), bytes.size());
}

}  // namespace

TEST(HeldIDTest, NothingIsRegisteredUntilSomebodyDoes) {
    EXPECT_EQ(MessageFactory::getReader(MSGID_GPS), nullptr);
    const DecodedMessage unread = decoded();
    EXPECT_EQ(unread.message, nullptr);
    ASSERT_TRUE(unread.error);
    EXPECT_EQ(unread.error->getCause(), IM_INVALID_MSGID);
    EXPECT_EQ(unread.error->getInvalidValue(), 22);
}

TEST(HeldIDTest, RegisteringIsRefusedAsLongAsAnotherReaderHoldsTheID) {
    ASSERT_TRUE(MessageFactory::registerReader(MSGID_GPS, readNothing));
    EXPECT_FALSE(GPSTraceMessage::registerMessage());
    EXPECT_FALSE(GPSTraceMessage::registerMessage());
    EXPECT_EQ(MessageFactory::getReader(MSGID_GPS), &readNothing);
    EXPECT_EQ(decoded().error->getCause(), IM_MISC);

    ASSERT_TRUE(MessageFactory::unregisterReader(MSGID_GPS, readNothing));
    EXPECT_TRUE(GPSTraceMessage::registerMessage());
    EXPECT_NE(decoded().message, nullptr);
    EXPECT_FALSE(MessageFactory::registerReader(MSGID_GPS, readNothing));
    EXPECT_NE(decoded().message, nullptr);
    const MessageFactory::Reader reader = MessageFactory::getReader(MSGID_GPS);
    EXPECT_TRUE(MessageFactory::unregisterReader(MSGID_GPS, reader));
}
