#include "tests/support/messages.h"

#include <gtest/gtest.h>

#include "libvexutil/datablock.h"

Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

Bytes writtenBytes(const MessageBase& message) {
    Bytes bytes(message.getSize() + 2);
    uint8_t* pdest = bytes.data();
    EXPECT_EQ(message.writeToByteArray(pdest, bytes.size(), false), message.getSize());
    EXPECT_EQ(pdest, bytes.data() + bytes.size());
    return bytes;
}

Bytes serialised(uint16_t reserved, timeStamp_t timeStamp, std::string_view payload) {
    Bytes bytes(MessageBase::MO_BASE_DERIVED);
    uint16ToByteArray(static_cast<uint16_t>(12 + payload.size()), bytes.data());
    uint16ToByteArray(22, bytes.data() + MessageBase::MO_MSGID);
    uint16ToByteArray(reserved, bytes.data() + MessageBase::MO_HDRRESERVED);
    uint64ToByteArray(timeStamp, bytes.data() + MessageBase::MO_TIMESTAMP);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

std::unique_ptr<GPSTraceMessage> rebuild(const Bytes& bytes) {
    EXPECT_TRUE(GPSTraceMessage::registerMessage());
    DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    EXPECT_EQ(decoded.bytesTaken, bytes.size());
    auto* gps = dynamic_cast<GPSTraceMessage*>(decoded.message.get());
    if (gps == nullptr) {
        ADD_FAILURE() << (decoded.error ? decoded.error->what() : "no GPS message");
        return nullptr;
    }
    static_cast<void>(decoded.message.release());
    return std::unique_ptr<GPSTraceMessage>(gps);
}

std::string payloadOf(const MessageBase& message) {
    const Bytes bytes = writtenBytes(message);
    return std::string(bytes.begin() + MessageBase::MO_BASE_DERIVED, bytes.end());
}
