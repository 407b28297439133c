#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vextrace {

/// Whether the text is one or more of the digits 0 to 9 and nothing else.
inline bool isDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether the text is a number as receivers send them: digits with at most one point, with a sign
/// or none. What the library makes of anything else is no number of the receiver's.
inline bool isNumber(std::string_view text) {
    text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    size_t digits = 0;
    size_t points = 0;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            ++digits;
        } else if (c != '.' || ++points > 1) {
            return false;
        }
    }
    return digits > 0;
}

/// The number that at most nine digits write.
inline unsigned number(std::string_view digits) {
    unsigned value = 0;
    for (const char digit : digits) {
        value = value * 10 + static_cast<unsigned>(digit - '0');
    }
    return value;
}

/// Nanoseconds of the digits behind the point of a number of seconds; what is finer is cut off.
inline uint64_t fractionToNanoseconds(std::string_view fraction) {
    uint64_t value = 0;
    for (size_t i = 0; i < 9; ++i) {
        value = value * 10 + (i < fraction.size() ? static_cast<unsigned>(fraction[i] - '0') : 0);
    }
    return value;
}

/// The value of a hexadecimal digit of either case, -1 where it is none.
inline int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

}  // namespace vextrace
