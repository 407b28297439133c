/// \file
/// What all trace messages share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "libvextrace/busID.h"
#include "libvextrace/messageID.h"
#include "libvextrace/visibility.h"

/// Time stamp of a trace message. The library carries it and does not interpret it; its unit is
/// whatever the recorder uses.
using timeStamp_t = uint64_t;

/// What decoding answers to bytes that it cannot decode.
enum invalidMsgHandling_t {
    IMH_RETURN_NULL = 0,            ///< no message
    IMH_RETURN_INVALID_MESSAGE = 1  ///< a message of id MSGID_INVALID that keeps the bytes
};

/// A time-stamped trace message of any type. Derived types add their payload behind the common
/// header of the serialised form:
///
///     byte  0      2      4          6            14
///          +------+------+----------+------------+---------------------------+
///          | size |  id  | reserved | time stamp | payload of the type       |
///          |  u16 |  u16 |   u16    |    u64     |                           |
///          +------+------+----------+------------+---------------------------+
///          all numbers big-endian; size counts every byte behind itself
///
/// A message owns all its data. It may be read by several threads at once while none changes it, as
/// member functions that are not const do.
class VEXTRACE_EXPORT MessageBase {
public:
    /// Byte positions in the header above.
    enum : size_t {
        MO_MSGSIZE = 0,       ///< size field, 2 bytes
        MO_MSGID = 2,         ///< id, 2 bytes
        MO_HDRRESERVED = 4,   ///< reserved word, 2 bytes
        MO_TIMESTAMP = 6,     ///< time stamp, 8 bytes
        MO_BASE_DERIVED = 14  ///< the derived type's payload
    };

    /// Bytes of the size field, which getSize() does not count.
    static constexpr size_t MSGSIZE_LENGTH = MO_MSGID - MO_MSGSIZE;

    /// Positions in a second header, without reserved word, in a unit of its own. Named for the
    /// types that know it; no operation here reads or writes it.
    enum : size_t {
        MO2_MSGID = 0,        ///< id
        MO2_MSGSIZE = 1,      ///< size field
        MO2_TIMESTAMP = 3,    ///< time stamp
        MO2_BASE_DERIVED = 7  ///< the derived type's payload
    };

    /// Version of the framework. It is not part of the serialised form.
    static constexpr uint8_t version = 1;

    /// What MessageFactory answers to bytes that it cannot decode; IMH_RETURN_NULL unless set.
    /// Set it before threads decode: it is read without a lock.
    static invalidMsgHandling_t invalidHandling;

    /// Virtual: a message may be deleted through its base.
    virtual ~MessageBase();

    /// A deep copy of the same type, owned by the caller; never null. Each type overrides it, also
    /// one that derives from another: the clone() of that one would copy its part alone.
    virtual MessageBase* clone() const = 0;

    /// Writes the message in its byte-array form; this base part writes the header alone, and
    /// overrides write their payload behind it.
    ///
    /// \param pdest   where to write; advanced past the last byte written. That is getSize() + 2
    ///                bytes, but for an invalid message of 0 or 1 bytes, see DecodedMessage, which
    ///                writes those alone.
    /// \param maxlen  room at \p pdest in bytes, for the whole message (getSize() + 2)
    /// \param sync    pass false; it has no effect here, and is there for types that know one
    /// \return getSize(), which is two less than the bytes of the whole message
    /// \throws InvalidMessageException (IM_INVALID_LEN) when \p maxlen is too small (value: the
    ///         room, at most 65535) or getSize() exceeds the 16-bit size field (value: 65535);
    ///         nothing is written then, and \p pdest has not moved
    virtual size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const;

    /// What the header's size field says: the bytes of the serialised message behind that field.
    /// For a message without payload 12.
    virtual size_t getSize() const;

    /// Whether \p msg is of the same type and says the same; what counts is the type's to define.
    /// Messages of two different types are compared through MessageBase&; directly, C++20 finds the
    /// call ambiguous. A derived type should add an overload for its own type, as GPSTraceMessage
    /// does, so that two of its messages compare directly.
    virtual bool operator==(const MessageBase& msg) const = 0;

    /// Writes the message as one line of text, without line end, and returns \p os. This is the way
    /// to print a message of any type; the stream operator of MessageBase writes the common part
    /// alone. Numbers are written in the stream's locale, which is the C++ global locale of the
    /// time when the stream was made unless one is imbued: where that one groups digits,
    /// hexadecimal numbers are grouped, too. For lines that programs read, imbue
    /// std::locale::classic().
    virtual std::ostream& print(std::ostream& os) const = 0;

    /// The text that print() writes to a stream in its default state, and so in the C++ global
    /// locale: the library sets none. See print().
    virtual std::string toString() const = 0;

    /// Name of the source, such as "GPS".
    virtual std::string getSourceChannel() const = 0;

    /// Number of the source, see the static function of this name.
    virtual uint64_t getSourceChannelID() const = 0;

    /// Sets mbnr, for a message that arrives through the cascaded logger \p channel.
    virtual void cascadeChannel(uint16_t channel);

    /// Number of a source: \p mbnr in bits 32 to 63, \p bus in bits 8 to 15, \p channel in bits 0
    /// to 7, the others 0.
    static uint64_t getSourceChannelID(busid_t bus, uint8_t channel, uint32_t mbnr);

    /// The type of the message.
    msgid_t getMsgID() const { return msgID; }

    /// The time stamp, as it was given to the constructor or read from the header.
    timeStamp_t getTimeStamp() const { return stamp; }

    /// Sets the time stamp.
    void setTimeStamp(timeStamp_t timeStamp) { stamp = timeStamp; }

    /// The reserved word of the header, 0 unless set.
    uint16_t getHeaderReserved() const { return headerReserved; }
    /// Sets the reserved word of the header.
    void setHeaderReserved(uint16_t r) { headerReserved = r; }

    /// Takes over what every header carries beside size and id: time stamp and reserved word. For
    /// the reader of a message type, behind the constructor of its message.
    ///
    /// \param psrc  first byte of a serialised message; read only, not kept
    /// \param len   bytes readable at \p psrc
    /// \throws InvalidMessageException (IM_INVALID_LEN, value: \p len) when \p len is below 14;
    ///         nothing has changed then
    void restoreHeader(const uint8_t* psrc, size_t len);

    /// The number that tells apart the sources of several loggers, 0 unless set. It is not part of
    /// the serialised form.
    uint32_t getMbnr() const { return mbnr; }
    /// Sets mbnr. Unlike cascadeChannel() it takes all 32 bits.
    void setMbnr(uint32_t number) { mbnr = number; }

protected:
    /// A message of type \p id; reserved word and mbnr are 0.
    MessageBase(msgid_t id, timeStamp_t timeStamp);

    /// Copies all members. Copying and moving are for derived types alone, so that nothing is
    /// sliced.
    // NOLINTNEXTLINE(google-explicit-constructor): only derived types copy their base, by name
    explicit MessageBase(const MessageBase&) = default;
    /// Takes text and bytes over.
    MessageBase(MessageBase&&) noexcept = default;
    /// Copies all members, the id included.
    MessageBase& operator=(const MessageBase&) = default;
    /// Takes text and bytes over.
    MessageBase& operator=(MessageBase&&) noexcept = default;

    std::string text;             ///< for derived types that keep a text
    std::vector<uint8_t> bytes;   ///< for derived types that keep raw bytes
    msgid_t msgID;                ///< see getMsgID()
    uint16_t headerReserved = 0;  ///< see getHeaderReserved()
    timeStamp_t stamp;            ///< see getTimeStamp()
    uint32_t mbnr = 0;            ///< see getMbnr()
};

/// Writes what all messages have in common, each number in the stream's own format: the time stamp
/// in a field of width 16, a blank, mbnr in a field of width 8. Never calls print(): what the type
/// of the message adds is not written.
VEXTRACE_EXPORT std::ostream& operator<<(std::ostream& os, const MessageBase& msg);
