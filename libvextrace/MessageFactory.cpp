#include "libvextrace/MessageFactory.h"

#include <atomic>

#include "libvextrace/internal/InvalidMessage.h"
#include "libvexutil/datablock.h"

using vextrace::FramedMessage;
using vextrace::FRAMING_COMPLETE;
using vextrace::FRAMING_DAMAGED;
using vextrace::FRAMING_INCOMPLETE;

namespace {

struct RegisteredReader {
    const msgid_t id;
    std::atomic<MessageFactory::Reader> reader;  // null while it is taken back
    RegisteredReader* next;
};

// Grows at the front and never shrinks, so that threads walk it without a lock. Nor is there a lock
// to add to it: the child of a fork would wait for ever for a thread that was left in the parent.
std::atomic<RegisteredReader*> readers{nullptr};

RegisteredReader* findEntry(RegisteredReader* first, msgid_t id) {
    for (RegisteredReader* entry = first; entry != nullptr; entry = entry->next) {
        if (entry->id == id) {
            return entry;
        }
    }
    return nullptr;
}

// Puts the reader into the entry of its id; false when another holds it.
bool claim(RegisteredReader& entry, MessageFactory::Reader reader) {
    MessageFactory::Reader held = nullptr;
    return entry.reader.compare_exchange_strong(held, reader) || held == reader;
}

// Gives the length of the first message, or throws where range and size field do not fit.
size_t checkedLength(const uint8_t* psrc, size_t len) {
    if (len < MessageBase::MO_BASE_DERIVED) {
        throw InvalidMessageException(IM_INVALID_LEN,
                                      "MessageFactory: The bytes end within the header.",
                                      static_cast<uint16_t>(len));
    }
    const FramedMessage front = MessageFactory::frame(psrc, len);
    const uint16_t size = byteArrayToUint16(psrc + MessageBase::MO_MSGSIZE);
    if (front.framing == FRAMING_DAMAGED) {
        throw InvalidMessageException(
            IM_INVALID_LEN, "MessageFactory: The size field is too small for the header.", size);
    }
    if (front.framing == FRAMING_INCOMPLETE) {
        throw InvalidMessageException(IM_INVALID_LEN,
                                      "MessageFactory: The bytes end within the message.", size);
    }
    return front.length;
}

std::unique_ptr<MessageBase> readMessage(const uint8_t* psrc, size_t messageLength) {
    const auto id = static_cast<msgid_t>(byteArrayToUint16(psrc + MessageBase::MO_MSGID));
    const MessageFactory::Reader reader = MessageFactory::getReader(id);
    if (reader == nullptr) {
        throw InvalidMessageException(IM_INVALID_MSGID,
                                      "MessageFactory: No reader for the message id; "
                                      "registerMessage() of its type registers one.",
                                      id);
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
    RegisteredReader* first = readers.load();
    if (RegisteredReader* const entry = findEntry(first, id); entry != nullptr) {
        return claim(*entry, reader);
    }
    // NOLINTNEXTLINE(modernize-make-unique): it makes no aggregates before C++20
    auto added = std::unique_ptr<RegisteredReader>(new RegisteredReader{id, {reader}, first});
    while (!readers.compare_exchange_weak(added->next, added.get())) {
        // Another thread was faster, perhaps with the same id.
        if (RegisteredReader* const entry = findEntry(added->next, id); entry != nullptr) {
            return claim(*entry, reader);
        }
    }
    static_cast<void>(added.release());
    return true;
}

bool MessageFactory::unregisterReader(msgid_t id, Reader reader) {
    RegisteredReader* const entry = findEntry(readers.load(), id);
    return reader != nullptr && entry != nullptr &&
           entry->reader.compare_exchange_strong(reader, nullptr);
}

MessageFactory::Reader MessageFactory::getReader(msgid_t id) {
    const RegisteredReader* const entry = findEntry(readers.load(), id);
    return entry != nullptr ? entry->reader.load() : nullptr;
}

FramedMessage MessageFactory::frame(const uint8_t* psrc, size_t len) {
    if (len < MessageBase::MSGSIZE_LENGTH) {
        return {FRAMING_INCOMPLETE, MessageBase::MO_BASE_DERIVED};
    }
    const size_t length =
        byteArrayToUint16(psrc + MessageBase::MO_MSGSIZE) + MessageBase::MSGSIZE_LENGTH;
    if (length < MessageBase::MO_BASE_DERIVED) {
        return {FRAMING_DAMAGED, 0};
    }
    return {length <= len ? FRAMING_COMPLETE : FRAMING_INCOMPLETE, length};
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
