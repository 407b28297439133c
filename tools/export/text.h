#pragma once

#include <charconv>
#include <concepts>
#include <limits>
#include <string>

namespace vextools {

/// Appends the shortest decimal text that reads back as the same number, bit for bit. It has no
/// exponent, which some formats do not know. The number is finite.
void appendNumber(std::string& text, double number);

/// Appends a number rounded to so many decimals, at most 12, without zeros at the end. The number
/// has at most 15 digits then.
void appendRounded(std::string& text, double number, unsigned decimals);

void appendNumber(std::string& text, std::unsigned_integral auto number) {
    char digits[std::numeric_limits<decltype(number)>::digits10 + 1];
    const char* const end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    text.append(digits, static_cast<size_t>(end - digits));
}

}  // namespace vextools
