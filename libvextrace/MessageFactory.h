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
    /// null, or an invalid message, of id MSGID_INVALID. That one keeps the bytes and the reason.
    /// It prints the reason and the first 16 bytes, and writes all bytes back as they were found,
    /// be they two or a million.
    std::unique_ptr<MessageBase> message;

    /// Bytes from the front of the range that this answer stands for. Where size field and range
    /// do not fit together, nobody knows where the next message begins: then all of the range,
    /// which an invalid message copies.
    size_t bytesTaken = 0;

    /// Why the bytes could not be decoded; empty when they could.
    std::optional<InvalidMessageException> error;
};

namespace vextrace {

/// What the front of a byte range is, as far as its header tells.
enum framing_t : int {
    FRAMING_COMPLETE = 0,    ///< a whole message
    FRAMING_INCOMPLETE = 1,  ///< the beginning of a message
    FRAMING_DAMAGED = 2      ///< no message begins here: the size field is below 12
};

/// Answer of MessageFactory::frame().
struct FramedMessage {
    framing_t framing = FRAMING_INCOMPLETE;  ///< what the bytes are

    /// Of a whole message its bytes, header included. Of a beginning the bytes that are wanted in
    /// all before anything else can be said: first those of a header, then those of the message.
    /// Where the bytes are damaged 0: nobody knows where the next message begins.
    size_t length = 0;
};

}  // namespace vextrace

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
/// Threads may register and decode at the same time. The factory takes no lock of its own that the
/// child of a fork could wait for; but it allocates, and whether a child of several threads may do
/// that is up to the system's malloc.
///
/// The readers are those of one library: where a static library is linked into two shared objects,
/// each has its own, and a reader that one registers is unknown to the other. Link both with the
/// shared library then. MessageBase::invalidHandling is a plain variable: set it before threads
/// decode.
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

    /// Takes \p reader back, so that the id is free again. For code that is unloaded, such as a
    /// plug-in: a reader that is registered still, when its code is gone, is called all the same.
    ///
    /// Safe while other threads register, take back, and decode messages of other types. No thread
    /// may be decoding a message of type \p id: it may have looked the reader up already.
    /// \return true when \p reader held the id; false, with nothing changed, when it did not
    static bool unregisterReader(msgid_t id, Reader reader);

    /// The reader that decodes messages of type \p id; null when there is none.
    static Reader getReader(msgid_t id);

    /// Tells a whole message from the beginning of one and from damage, by the header alone. For
    /// bytes that arrive bit by bit: copies nothing, allocates nothing, needs no reader. decode()
    /// takes the same bytes as a whole message.
    ///
    ///     vextrace::FramedMessage front = MessageFactory::frame(psrc, len);
    ///     while (front.framing == vextrace::FRAMING_INCOMPLETE) {
    ///         // ... read until front.length bytes are there, or the source ends ...
    ///         front = MessageFactory::frame(psrc, len);
    ///     }
    ///
    /// \param psrc  read only, not kept; may be null when \p len is 0
    /// \param len   bytes readable at \p psrc
    static vextrace::FramedMessage frame(const uint8_t* psrc, size_t len);

    /// Decodes the first message of the \p len bytes at \p psrc. Header, size field and range are
    /// checked against each other before anything else is read.
    ///
    /// The bytes are taken to be all there are: of a buffer that still grows, ask frame() first.
    /// The beginning of a message is an error here, which takes all of the range with it.
    ///
    /// Not decodable, with the cause and value that the error carries:
    /// - fewer than 14 bytes: IM_INVALID_LEN, the number of bytes
    /// - a size field below 12 or beyond the range: IM_INVALID_LEN, the size field
    /// - no reader for the id, as registerMessage() of the message's type registers it:
    ///   IM_INVALID_MSGID, the id
    /// - the reader throws InvalidMessageException: that exception
    /// - the reader returns null: IM_MISC, 0
    ///
    /// \param psrc  read only, not kept; may be null when \p len is 0
    /// \param len   bytes readable at \p psrc
    /// \throws std::bad_alloc and whatever else but InvalidMessageException a reader throws
    static DecodedMessage decode(const uint8_t* psrc, size_t len);
};
