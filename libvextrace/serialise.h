/// \file
/// Messages of any type as byte vectors.
#pragma once

#include <cstdint>
#include <vector>

#include "libvextrace/MessageBase.h"
#include "libvextrace/visibility.h"

namespace vextrace {

/// The byte-array form of \p message: all its bytes, with the header, and no others.
///
/// \throws InvalidMessageException (IM_INVALID_LEN) when the message does not fit its size field,
///         see MessageBase::writeToByteArray()
VEXTRACE_EXPORT std::vector<uint8_t> serialise(const MessageBase& message);

/// Appends the byte-array form of \p message to \p bytes, so that a buffer can be filled with
/// messages back to back.
///
/// \throws InvalidMessageException as serialise() does, and std::bad_alloc; \p bytes holds what it
///         held before then
VEXTRACE_EXPORT void appendSerialised(const MessageBase& message, std::vector<uint8_t>& bytes);

}  // namespace vextrace
