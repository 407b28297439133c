#pragma once

#include <cstring>
#include <ostream>
#include <string>

#include "libvextrace/MessageBase.h"

/// A message of no library type, whose payload is the bytes of the base. Its own text differs from
/// the part that all messages have in common.
class TestMessage : public MessageBase {
public:
    TestMessage(msgid_t id, timeStamp_t timeStamp) : MessageBase(id, timeStamp) {}

    TestMessage* clone() const override { return new TestMessage(*this); }

    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override {
        const size_t size = MessageBase::writeToByteArray(pdest, maxlen, sync);
        if (!bytes.empty()) {
            std::memcpy(pdest, bytes.data(), bytes.size());
        }
        pdest += bytes.size();
        return size;
    }

    size_t getSize() const override { return MessageBase::getSize() + bytes.size(); }

    bool operator==(const MessageBase& msg) const override {
        const auto* other = dynamic_cast<const TestMessage*>(&msg);
        return other != nullptr && bytes == other->bytes;
    }

    std::ostream& print(std::ostream& os) const override { return os << toString(); }
    std::string toString() const override { return "the text of the type"; }
    std::string getSourceChannel() const override { return "TEST"; }

    uint64_t getSourceChannelID() const override {
        return MessageBase::getSourceChannelID(BUSID_CAN, 3, mbnr);
    }

    using MessageBase::bytes;
    using MessageBase::text;
};
