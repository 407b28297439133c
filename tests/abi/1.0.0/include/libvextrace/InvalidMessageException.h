/// \file
/// The error of the trace-message library.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "libvextrace/visibility.h"

/// Why a message was refused.
enum invalidMessageCause_t {
    IM_INVALID_MSGID = 1,       ///< no such message type
    IM_INVALID_ENUM_VALUE = 2,  ///< a value outside its enumeration
    IM_INVALID_LEN = 3,         ///< too few or too many bytes
    IM_INVALID_PARAMETER = 4,   ///< a parameter that makes no sense
    IM_MISC = 5                 ///< anything else; the text says what
};

/// Thrown, by value, when a message cannot be decoded or written: a cause to act on, a text for
/// people, and the offending value where there is one.
class VEXTRACE_EXPORT InvalidMessageException : public std::exception {
public:
    /// IM_MISC, no text, value 0.
    InvalidMessageException();

    /// \param reason        why
    /// \param text          text for people, copied; null counts as empty
    InvalidMessageException(invalidMessageCause_t reason, const char* text);

    /// \param reason        why
    /// \param text          text for people, copied; null counts as empty
    /// \param offendingValue  the value that was refused; its meaning follows from the text
    InvalidMessageException(invalidMessageCause_t reason, const char* text,
                            uint16_t offendingValue);

    /// Copies cause, text and value.
    InvalidMessageException(const InvalidMessageException&) = default;
    /// Takes the text over.
    InvalidMessageException(InvalidMessageException&&) noexcept = default;
    /// Copies cause, text and value.
    InvalidMessageException& operator=(const InvalidMessageException&) = default;
    /// Takes the text over.
    InvalidMessageException& operator=(InvalidMessageException&&) noexcept = default;
    /// Releases the text.
    ~InvalidMessageException() override;

    /// The text, without the value; valid as long as the exception is and is not assigned to.
    const char* what() const noexcept override;

    /// Why the message was refused.
    invalidMessageCause_t getCause() const;

    /// Sets the offending value, for whoever knows it only later.
    void setInvalidValue(uint16_t value);

    /// The offending value, 0 when there is none.
    uint16_t getInvalidValue() const;

private:
    invalidMessageCause_t cause;
    std::string msg;
    uint16_t invalidValue;
};
