#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "libvexstream/internal/codeNumber.h"
#include "libvexstream/messageNames.h"
#include "libvextrace/MessageBase.h"
#include "libvexutil/datablock.h"

namespace vextrace {

/// Bytes of the longest message.
constexpr size_t LONGEST_MESSAGE = 0xFFFF + MessageBase::MSGSIZE_LENGTH;

/// Bytes of a header that tell whether it is one: size field and id.
constexpr size_t HEADER_FRONT = MessageBase::MO_HDRRESERVED;

inline msgid_t messageId(const uint8_t* message) {
    return static_cast<msgid_t>(byteArrayToUint16(message + MessageBase::MO_MSGID));
}

inline timeStamp_t messageStamp(const uint8_t* message) {
    return byteArrayToUint64(message + MessageBase::MO_TIMESTAMP);
}

/// Bytes of the message by its size field; less than a header has where the field is wrong.
inline size_t messageLength(const uint8_t* message) {
    return byteArrayToUint16(message + MessageBase::MO_MSGSIZE) + MessageBase::MSGSIZE_LENGTH;
}

/// Whether the HEADER_FRONT bytes at \p front may begin a message: the size field covers a header,
/// and the type is expected.
inline bool mayBeHeader(const uint8_t* front) {
    return messageLength(front) >= MessageBase::MO_BASE_DERIVED && isExpected(messageId(front));
}

bool holdsNul(std::span<const uint8_t> payload);

/// Reads the payload of a GPS message where it is as the library writes it: lines, none of them
/// empty, each with its line feed, their codes in strictly ascending order, no NUL byte. Bytes that
/// are no GPS message are not like that by chance.
///
/// \param take  is given each line; false where it refuses it
/// \return whether the payload is like that, and no line was refused
template <class Take>
bool readCanonical(std::span<const uint8_t> payload, Take take) {
    if (payload.empty() || payload.back() != '\n' || holdsNul(payload)) {
        return false;
    }
    std::string_view rest(reinterpret_cast<const char*>(payload.data()), payload.size());
    uint64_t previous = 0;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n') + 1);
        const uint64_t code = codeNumber(line);
        if (line.size() == 1 || code <= previous || !take(line)) {
            return false;
        }
        previous = code;
        rest.remove_prefix(line.size());
    }
    return true;
}

/// Whether it is like that.
bool isCanonical(std::span<const uint8_t> payload);

}  // namespace vextrace
