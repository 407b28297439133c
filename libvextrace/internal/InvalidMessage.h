#pragma once

#include "libvextrace/MessageBase.h"

namespace vextrace::internal {

/// Stands for bytes that could not be decoded, so that a trace can be shown and written on without
/// losing them. Keeps time stamp and reserved word where the bytes hold a whole header.
class InvalidMessage : public MessageBase {
public:
    /// Copies the \p len bytes at \p psrc and the \p reason.
    InvalidMessage(const uint8_t* psrc, size_t len, const char* reason);

    InvalidMessage* clone() const override;

    /// Writes the bytes as they were found and advances \p pdest past them; returns getSize().
    /// \throws InvalidMessageException (IM_INVALID_LEN; value: \p maxlen, at most 65535) when
    ///         \p maxlen is smaller than they are
    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override;

    /// Two less than the number of bytes, as for every message; 0 when there are fewer than two.
    size_t getSize() const override;

    /// True when \p msg keeps the same bytes; the reason does not count.
    bool operator==(const MessageBase& msg) const override;

    /// The common part, a column "  INVALID     |", the reason, the number of bytes in decimal and
    /// the first 16 of them in hexadecimal, with " ..." where there are more.
    std::ostream& print(std::ostream& os) const override;

    std::string toString() const override;
    std::string getSourceChannel() const override;
    uint64_t getSourceChannelID() const override;
};

}  // namespace vextrace::internal
