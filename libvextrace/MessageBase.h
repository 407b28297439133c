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
/// A message may be read by several threads at once while none changes it.
class MessageBase {
public:
    /// Byte positions in the header above.
    enum : size_t {
        MO_MSGSIZE = 0,
        MO_MSGID = 2,
        MO_HDRRESERVED = 4,
        MO_TIMESTAMP = 6,
        MO_BASE_DERIVED = 14  ///< the derived type's payload
    };

    /// Bytes of the size field, which getSize() does not count.
    static constexpr size_t MSGSIZE_LENGTH = MO_MSGID - MO_MSGSIZE;

    /// Positions in a second header, without reserved word. Named for the types that know it; no
    /// operation here reads or writes it.
    enum : size_t { MO2_MSGID = 0, MO2_MSGSIZE = 1, MO2_TIMESTAMP = 3, MO2_BASE_DERIVED = 7 };

    static constexpr uint8_t version = 1;

    /// What MessageFactory answers to bytes that it cannot decode; IMH_RETURN_NULL unless set.
    /// Set it before threads decode: it is read without a lock.
    static invalidMsgHandling_t invalidHandling;

    virtual ~MessageBase();

    /// A deep copy, owned by the caller; never null.
    virtual MessageBase* clone() const = 0;

    /// Writes the message in its byte-array form; this base part writes the header alone, and
    /// overrides write their payload behind it.
    ///
    /// \param pdest   where to write; advanced past the last byte written
    /// \param maxlen  room at \p pdest in bytes, for the whole message (getSize() + 2)
    /// \param sync    does not change the bytes
    /// \return getSize(), which is two less than the bytes of the whole message
    /// \throws InvalidMessageException (IM_INVALID_LEN) when \p maxlen is too small (value: the
    ///         room, at most 65535) or getSize() exceeds the 16-bit size field (value: 65535);
    ///         nothing is written then, and \p pdest has not moved
    virtual size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const;

    /// What the header's size field says: the bytes of the serialised message behind that field.
    /// For a message without payload 12.
    virtual size_t getSize() const;

    /// Whether \p msg is of the same type and says the same; what counts is the type's to define.
    virtual bool operator==(const MessageBase& msg) const = 0;

    /// Writes the message as one line of text, without line end, and returns \p os.
    virtual std::ostream& print(std::ostream& os) const = 0;

    /// The text that print() writes to a stream in its default state.
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

    msgid_t getMsgID() const { return msgID; }

    timeStamp_t getTimeStamp() const { return stamp; }

    /// The reserved word of the header, 0 unless set.
    uint16_t getHeaderReserved() const { return headerReserved; }
    void setHeaderReserved(uint16_t r) { headerReserved = r; }

    /// The number that tells apart the sources of several loggers, 0 unless set. It is not part of
    /// the serialised form.
    uint32_t getMbnr() const { return mbnr; }
    void setMbnr(uint32_t number) { mbnr = number; }

protected:
    MessageBase(msgid_t id, timeStamp_t timeStamp);

    // Copying is for derived types alone, so that nothing is sliced.
    explicit MessageBase(const MessageBase&) = default;
    MessageBase(MessageBase&&) noexcept = default;
    MessageBase& operator=(const MessageBase&) = default;
    MessageBase& operator=(MessageBase&&) noexcept = default;

    std::string text;            ///< for derived types that keep a text
    std::vector<uint8_t> bytes;  ///< for derived types that keep raw bytes
    msgid_t msgID;
    uint16_t headerReserved = 0;
    timeStamp_t stamp;
    uint32_t mbnr = 0;
};

/// Writes what all messages have in common, each number in the stream's own format: the time stamp
/// in a field of width 16, a blank, mbnr in a field of width 8. Never calls print().
std::ostream& operator<<(std::ostream& os, const MessageBase& msg);
