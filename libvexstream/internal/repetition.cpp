#include "libvexstream/internal/repetition.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "libvextrace/MessageBase.h"

namespace vextrace {

namespace {

constexpr size_t TYPE = MessageBase::MO_TIMESTAMP - MessageBase::MO_MSGID;
constexpr size_t UPPER_OF_TIME = 3;

bool repeats(const uint8_t* header, size_t period, size_t count) {
    return std::memcmp(header, header + period, count - period) == 0;
}

bool isAll(std::string_view bytes, char byte) {
    return bytes.find_first_not_of(byte) == std::string_view::npos;
}

}  // namespace

bool isPeriodic(const uint8_t* header) {
    if (repeats(header, 1, MessageBase::MO_TIMESTAMP) ||
        repeats(header, 2, MessageBase::MO_TIMESTAMP)) {
        return true;
    }
    for (size_t period = 3; period <= 10; ++period) {
        if (header[period] == header[0] && repeats(header, period, MessageBase::MO_BASE_DERIVED)) {
            return true;
        }
    }
    return false;
}

bool hasHeaderAgain(const uint8_t* header, size_t length) {
    const std::string_view front(reinterpret_cast<const char*>(header),
                                 std::min(length, MessageBase::MO_BASE_DERIVED + EYE));
    const std::string_view type = front.substr(MessageBase::MO_MSGID, TYPE);
    const std::string_view time = front.substr(MessageBase::MO_TIMESTAMP, UPPER_OF_TIME);
    if (isAll(type, '\0') && isAll(time, '\0')) {
        return false;  // as payloads of zeros have it
    }
    const bool isUniform = isAll(time, time[0]);
    for (size_t at = front.find(time, MessageBase::MO_BASE_DERIVED + TYPE);
         at != std::string_view::npos; at = front.find(time, at + 1)) {
        const size_t inStep = at + at - MessageBase::MO_TIMESTAMP;
        if (front.substr(at - TYPE, TYPE) == type ||
            (!isUniform && inStep < front.size() && front.substr(inStep, UPPER_OF_TIME) == time)) {
            return true;
        }
    }
    return false;
}

}  // namespace vextrace
