#pragma once

#include <charconv>
#include <concepts>
#include <limits>
#include <string>

namespace vextools {

/// Appends the shortest decimal text that reads back as the same number, bit for bit. It has no
/// exponent, which some formats do not know. The number is finite.
void appendNumber(std::string& text, double number);

/// Appends a number rounded to 3 decimals, without zeros at the end. The number is less than 1e12.
void appendThousandths(std::string& text, double number);

/// Appends degrees rounded to 12 decimals, a fraction of a micrometre, without zeros at the end.
void appendDegrees(std::string& text, double degrees);

void appendNumber(std::string& text, std::unsigned_integral auto number) {
    char digits[std::numeric_limits<decltype(number)>::digits10 + 1];
    const char* const end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    text.append(digits, static_cast<size_t>(end - digits));
}

}  // namespace vextools
