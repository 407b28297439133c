#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vextrace::tools {

// What a file is, by the bytes at its front: for hints to whoever mixed them up.

/// Whether they begin with a message.
bool looksLikeTrace(std::span<const uint8_t> front);

/// Whether they are text with a sentence that has a right checksum.
bool looksLikeLog(std::span<const uint8_t> front);

/// The bytes at the front of a regular file; nothing of others, which would be used up.
/// \throws UsageError and DataError where it cannot be read
std::vector<uint8_t> frontOf(const std::string& path);

}  // namespace vextrace::tools
