#include "libvextrace/MessageFactory.h"

#include <atomic>
#include <mutex>

#include "libvextrace/internal/InvalidMessage.h"
#include "libvexutil/datablock.h"

namespace {

struct RegisteredReader {
    msgid_t id;
    MessageFactory::Reader reader;
    const RegisteredReader* next;
};

// Grows at the front and never shrinks, so that decoding threads walk it without a lock.
std::atomic<const RegisteredReader*> readers{nullptr};
std::mutex registration;

MessageFactory::Reader findReader(const RegisteredReader* first, msgid_t id) {
    for (const RegisteredReader* entry = first; entry != nullptr; entry = entry->next) {
        if (entry->id == id) {
            return entry->reader;
        }
    }
    return nullptr;
}

// Gives the length of the first message, or throws where range and size field do not fit.
size_t checkedLength(const uint8_t* psrc, size_t len) {
    if (len < MessageBase::MO_BASE_DERIVED) {
        throw InvalidMessageException(IM_INVALID_LEN,
                                      "MessageFactory: The bytes end within the header.",
                                      static_cast<uint16_t>(len));
    }
    const uint16_t size = byteArrayToUint16(psrc + MessageBase::MO_MSGSIZE);
    const size_t messageLength = size + MessageBase::MSGSIZE_LENGTH;
    if (messageLength < MessageBase::MO_BASE_DERIVED) {
        throw InvalidMessageException(
            IM_INVALID_LEN, "MessageFactory: The size field is too small for the header.", size);
    }
    if (messageLength > len) {
        throw InvalidMessageException(IM_INVALID_LEN,
                                      "MessageFactory: The bytes end within the message.", size);
    }
    return messageLength;
}

std::unique_ptr<MessageBase> readMessage(const uint8_t* psrc, size_t messageLength) {
    const auto id = static_cast<msgid_t>(byteArrayToUint16(psrc + MessageBase::MO_MSGID));
    const MessageFactory::Reader reader = MessageFactory::getReader(id);
    if (reader == nullptr) {
        throw InvalidMessageException(IM_INVALID_MSGID,
                                      "MessageFactory: No reader for the message id.", id);
    }
    std::unique_ptr<MessageBase> message(reader(psrc, messageLength));
    if (message == nullptr) {
        throw InvalidMessageException(IM_MISC, "MessageFactory: The reader gave no message.");
    }
    return message;
}

std::unique_ptr<MessageBase> invalidMessage(const uint8_t* psrc, size_t len, const char* reason) {
    if (MessageBase::invalidHandling == IMH_RETURN_NULL) {
        return nullptr;
    }
    return std::make_unique<vextrace::internal::InvalidMessage>(psrc, len, reason);
}

}  // namespace

bool MessageFactory::registerReader(msgid_t id, Reader reader) {
    if (reader == nullptr) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(registration);
    const RegisteredReader* first = readers.load(std::memory_order_relaxed);
    if (const Reader held = findReader(first, id); held != nullptr) {
        return held == reader;
    }
    readers.store(new RegisteredReader{id, reader, first}, std::memory_order_release);
    return true;
}

MessageFactory::Reader MessageFactory::getReader(msgid_t id) {
    return findReader(readers.load(std::memory_order_acquire), id);
}

DecodedMessage MessageFactory::decode(const uint8_t* psrc, size_t len) {
    DecodedMessage decoded;
    decoded.bytesTaken = len;
    try {
        decoded.bytesTaken = checkedLength(psrc, len);
        decoded.message = readMessage(psrc, decoded.bytesTaken);
    } catch (const InvalidMessageException& error) {
        decoded.message = invalidMessage(psrc, decoded.bytesTaken, error.what());
        decoded.error = error;
    }
    return decoded;
}
