#include "libvextrace/MessageBase.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "libvextrace/InvalidMessageException.h"
#include "libvexutil/datablock.h"

namespace {

constexpr size_t SIZE_FIELD_MAX = 0xFFFF;

void checkLength(size_t size, size_t maxlen) {
    if (size > SIZE_FIELD_MAX) {
        throw InvalidMessageException(
            IM_INVALID_LEN, "MessageBase: The message is too long for its size field.", 0xFFFF);
    }
    const size_t length = size + MessageBase::MSGSIZE_LENGTH;
    if (maxlen < std::max<size_t>(length, MessageBase::MO_BASE_DERIVED)) {
        throw InvalidMessageException(IM_INVALID_LEN, "MessageBase: No room for the message.",
                                      static_cast<uint16_t>(std::min(maxlen, SIZE_FIELD_MAX)));
    }
}

}  // namespace

invalidMsgHandling_t MessageBase::invalidHandling = IMH_RETURN_NULL;

MessageBase::MessageBase(msgid_t id, timeStamp_t timeStamp) : msgID(id), stamp(timeStamp) {}

MessageBase::~MessageBase() = default;

size_t MessageBase::writeToByteArray(uint8_t*& pdest, size_t maxlen, bool /*sync*/) const {
    const size_t size = getSize();
    checkLength(size, maxlen);
    uint16ToByteArray(static_cast<uint16_t>(size), pdest + MO_MSGSIZE);
    uint16ToByteArray(msgID, pdest + MO_MSGID);
    uint16ToByteArray(headerReserved, pdest + MO_HDRRESERVED);
    uint64ToByteArray(stamp, pdest + MO_TIMESTAMP);
    pdest += MO_BASE_DERIVED;
    return size;
}

size_t MessageBase::getSize() const {
    return MO_BASE_DERIVED - MSGSIZE_LENGTH;
}

void MessageBase::restoreHeader(const uint8_t* psrc, size_t len) {
    if (len < MO_BASE_DERIVED) {
        throw InvalidMessageException(IM_INVALID_LEN,
                                      "MessageBase: The bytes end within the header.",
                                      static_cast<uint16_t>(len));
    }
    stamp = byteArrayToUint64(psrc + MO_TIMESTAMP);
    headerReserved = byteArrayToUint16(psrc + MO_HDRRESERVED);
}

void MessageBase::cascadeChannel(uint16_t channel) {
    mbnr = channel;
}

uint64_t MessageBase::getSourceChannelID(busid_t bus, uint8_t channel, uint32_t mbnr) {
    return static_cast<uint64_t>(mbnr) << 32 |
           static_cast<uint64_t>(static_cast<uint8_t>(bus)) << 8 | channel;
}

std::ostream& operator<<(std::ostream& os, const MessageBase& msg) {
    return os << std::setw(16) << msg.getTimeStamp() << ' ' << std::setw(8) << msg.getMbnr();
}
