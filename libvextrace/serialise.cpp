#include "libvextrace/serialise.h"

namespace vextrace {

std::vector<uint8_t> serialise(const MessageBase& message) {
    std::vector<uint8_t> bytes;
    appendSerialised(message, bytes);
    return bytes;
}

void appendSerialised(const MessageBase& message, std::vector<uint8_t>& bytes) {
    const size_t before = bytes.size();
    const size_t room = message.getSize() + MessageBase::MSGSIZE_LENGTH;
    bytes.resize(before + room);
    try {
        uint8_t* const begin = bytes.data() + before;
        uint8_t* end = begin;
        message.writeToByteArray(end, room, false);
        // An invalid message of less than two bytes writes less than the room it asks for.
        bytes.resize(before + static_cast<size_t>(end - begin));
    } catch (...) {
        bytes.resize(before);
        throw;
    }
}

}  // namespace vextrace
