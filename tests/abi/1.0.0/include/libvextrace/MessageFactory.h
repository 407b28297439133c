/// \file
/// From bytes to trace messages of any type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/MessageBase.h"
#include "libvextrace/visibility.h"

/// What MessageFactory::decode made of the front of a byte range.
struct DecodedMessage {
    /// The message. Where the bytes could not be decoded, MessageBase::invalidHandling decides:
    /// null, or a message of id MSGID_INVALID that keeps the bytes and the reason, prints both
    /// shortly and writes its bytes back unchanged, whatever their number: no size field limits
    /// them, and setHeaderReserved() does not change them.
    std::unique_ptr<MessageBase> message;

    /// Bytes from the front of the range that this answer stands for. Where size field and range
    /// do not fit together, nobody knows where the next message begins: then all of the range,
    /// which an invalid message copies.
    size_t bytesTaken = 0;

    /// Why the bytes could not be decoded; empty when they could.
    std::optional<InvalidMessageException> error;
};

/// Decodes serialised messages with the readers that the message types register. Messages that lie
/// back to back are walked like this:
///
///     while (len > 0) {
///         DecodedMessage decoded = MessageFactory::decode(psrc, len);
///         // ... report decoded.error where there is one; use decoded.message where it is not
///         // null ...
///         psrc += decoded.bytesTaken;
///         len -= decoded.bytesTaken;
///     }
///
/// Only the framing of one message is known. A damaged size field that still fits the range can
/// swallow the messages behind it without an error.
///
/// Threads may register and decode at the same time. MessageBase::invalidHandling is read without a
/// lock: set it before.
class VEXTRACE_EXPORT MessageFactory {
public:
    /// There are no factories; all functions are static.
    MessageFactory() = delete;

    /// Rebuilds a message from the \p len bytes at \p psrc, which are exactly one message with its
    /// header. Returns a new message that the caller owns; throws InvalidMessageException where
    /// the bytes are none.
    using Reader = MessageBase* (*)(const uint8_t* psrc, size_t len);

    /// Makes \p reader the one that decodes messages of type \p id.
    /// \return true when \p reader is registered, also when it already was; false when it is null
    ///         or another reader holds the id, which then stays
    static bool registerReader(msgid_t id, Reader reader);

    /// The reader that decodes messages of type \p id; null when there is none.
    static Reader getReader(msgid_t id);

    /// Decodes the first message of the \p len bytes at \p psrc. Header, size field and range are
    /// checked against each other before anything else is read.
    ///
    /// Not decodable, with the cause and value that the error carries:
    /// - fewer than 14 bytes: IM_INVALID_LEN, the number of bytes
    /// - a size field below 12 or beyond the range: IM_INVALID_LEN, the size field
    /// - no reader for the id: IM_INVALID_MSGID, the id
    /// - the reader throws InvalidMessageException: that exception
    /// - the reader returns null: IM_MISC, 0
    ///
    /// \param psrc  read only, not kept; may be null when \p len is 0
    /// \param len   bytes readable at \p psrc
    /// \throws std::bad_alloc and whatever else but InvalidMessageException a reader throws
    static DecodedMessage decode(const uint8_t* psrc, size_t len);
};
