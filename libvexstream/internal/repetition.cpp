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
    return header[period] == header[0] && std::memcmp(header, header + period, count - period) == 0;
}

bool isAll(std::string_view bytes, char byte) {
    return bytes.find_first_not_of(byte) == std::string_view::npos;
}

// Searched by the first byte that is not zero: zeros are all over.
bool holdsTypeAndTime(std::string_view payload, std::string_view typeAndTime) {
    const size_t front = typeAndTime.find_first_not_of('\0');
    size_t at = payload.find(typeAndTime[front], front);
    while (at != std::string_view::npos &&
           payload.substr(at - front, typeAndTime.size()) != typeAndTime) {
        at = payload.find(typeAndTime[front], at + 1);
    }
    return at != std::string_view::npos;
}

// Whether the time of a header stands again, behind the type or in steps.
bool holdsTime(std::string_view front, std::string_view type, std::string_view time) {
    constexpr size_t FIRST = MessageBase::MO_BASE_DERIVED + TYPE;
    for (size_t at = front.find(time, FIRST); at != std::string_view::npos;
         at = front.find(time, at + 1)) {
        const size_t inStep = at + at - MessageBase::MO_TIMESTAMP;
        if (front.substr(at - TYPE, TYPE) == type ||
            (inStep < front.size() && front.substr(inStep, UPPER_OF_TIME) == time)) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool isPeriodic(const uint8_t* header) {
    if (repeats(header, 1, MessageBase::MO_TIMESTAMP) ||
        repeats(header, 2, MessageBase::MO_TIMESTAMP)) {
        return true;
    }
    for (size_t period = 3; period <= 10; ++period) {
        if (repeats(header, period, MessageBase::MO_BASE_DERIVED)) {
            return true;
        }
    }
    return false;
}

bool hasHeaderAgain(const uint8_t* header, size_t length) {
    constexpr size_t PAYLOAD = MessageBase::MO_BASE_DERIVED;
    const std::string_view front(reinterpret_cast<const char*>(header),
                                 std::min(length, PAYLOAD + EYE));
    const std::string_view typeAndTime = front.substr(MessageBase::MO_MSGID, TYPE + UPPER_OF_TIME);
    const std::string_view time = typeAndTime.substr(TYPE);
    if (!isAll(time, time[0])) {
        return holdsTime(front, typeAndTime.substr(0, TYPE), time);
    }
    // Where all of it is zeros, so it is in payloads of zeros.
    return !isAll(typeAndTime, '\0') && holdsTypeAndTime(front.substr(PAYLOAD), typeAndTime);
}

}  // namespace vextrace
