#include "libvextrace/internal/InvalidMessage.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <string>

#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/internal/TextStream.h"
#include "libvextrace/internal/TraceFormat.h"
#include "libvexutil/datablock.h"

namespace vextrace::internal {

InvalidMessage::InvalidMessage(const uint8_t* psrc, size_t len, const char* reason)
    : MessageBase(MSGID_INVALID, 0) {
    text = reason;
    bytes.assign(psrc, psrc + len);
    if (len >= MO_BASE_DERIVED) {
        headerReserved = byteArrayToUint16(psrc + MO_HDRRESERVED);
        stamp = byteArrayToUint64(psrc + MO_TIMESTAMP);
    }
}

InvalidMessage* InvalidMessage::clone() const {
    return new InvalidMessage(*this);
}

size_t InvalidMessage::writeToByteArray(uint8_t*& pdest, size_t maxlen, bool /*sync*/) const {
    if (maxlen < bytes.size()) {
        throw InvalidMessageException(IM_INVALID_LEN, "InvalidMessage: No room for the bytes.",
                                      static_cast<uint16_t>(std::min<size_t>(maxlen, 0xFFFF)));
    }
    pdest = std::copy(bytes.begin(), bytes.end(), pdest);
    return getSize();
}

size_t InvalidMessage::getSize() const {
    return bytes.size() < MSGSIZE_LENGTH ? 0 : bytes.size() - MSGSIZE_LENGTH;
}

bool InvalidMessage::operator==(const MessageBase& msg) const {
    const auto* other = dynamic_cast<const InvalidMessage*>(&msg);
    return other != nullptr && bytes == other->bytes;
}

std::ostream& InvalidMessage::print(std::ostream& os) const {
    constexpr size_t SHOWN = 16;
    TraceFormat format(os);
    os << static_cast<const MessageBase&>(*this) << "  INVALID     | " << text << ' '
       << std::to_string(bytes.size()) << " bytes:";
    for (size_t i = 0; i < std::min(bytes.size(), SHOWN); ++i) {
        os << ' ' << std::setw(2) << static_cast<unsigned>(bytes[i]);
    }
    if (bytes.size() > SHOWN) {
        os << " ...";
    }
    format.restore();
    return os;
}

std::string InvalidMessage::toString() const {
    TextStream line;
    print(line.os);
    return line.takeText();
}

std::string InvalidMessage::getSourceChannel() const {
    return "INVALID";
}

uint64_t InvalidMessage::getSourceChannelID() const {
    return MessageBase::getSourceChannelID(BUSID_UNKNOWN, 0, mbnr);
}

}  // namespace vextrace::internal
