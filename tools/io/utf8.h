#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vextrace::tools {

/// Bytes of the UTF-8 character at the front of the text, which is not empty; 0 where there is
/// none. Overlong forms, surrogates and what is beyond U+10FFFF are none.
size_t characterLength(std::string_view text);

bool isUtf8(std::string_view text);

/// How many characters there are, in a text that is UTF-8.
size_t characterCount(std::string_view text);

/// The number of a character, given its bytes.
uint32_t codePoint(std::string_view character);

}  // namespace vextrace::tools
