#include "libvextrace/InvalidMessageException.h"

InvalidMessageException::InvalidMessageException() : InvalidMessageException(IM_MISC, "") {}

InvalidMessageException::InvalidMessageException(invalidMessageCause_t reason, const char* text)
    : InvalidMessageException(reason, text, 0) {}

InvalidMessageException::InvalidMessageException(invalidMessageCause_t reason, const char* text,
                                                 uint16_t offendingValue)
    : cause(reason), msg(text != nullptr ? text : ""), invalidValue(offendingValue) {}

InvalidMessageException::~InvalidMessageException() = default;

const char* InvalidMessageException::what() const noexcept {
    return msg.c_str();
}

invalidMessageCause_t InvalidMessageException::getCause() const {
    return cause;
}

void InvalidMessageException::setInvalidValue(uint16_t value) {
    invalidValue = value;
}

uint16_t InvalidMessageException::getInvalidValue() const {
    return invalidValue;
}
