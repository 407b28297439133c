#pragma once

#include <concepts>
#include <cstdint>

#include "libvextrace/MessageBase.h"
#include "tools/io/TextBuffer.h"

namespace vextrace::tools {

/// Appends the shortest decimal text that reads back as the same number, bit for bit. It has no
/// exponent, which some formats do not know. The number is finite.
void appendNumber(TextBuffer& text, double number);

/// The same, faster for a number that hardly ever has few decimals, as degrees made of minutes.
void appendCoordinate(TextBuffer& text, double degrees);

/// Appends a number rounded to 3 decimals, without zeros at the end. The number is less than 1e12.
void appendThousandths(TextBuffer& text, double number);

/// Appends degrees rounded to 12 decimals, a fraction of a micrometre, without zeros at the end.
void appendDegrees(TextBuffer& text, double degrees);

/// Appends a time as utcText() gives it.
void appendUtc(TextBuffer& text, timeStamp_t stamp);

void appendInteger(TextBuffer& text, uint64_t number);

void appendNumber(TextBuffer& text, std::unsigned_integral auto number) {
    appendInteger(text, number);
}

}  // namespace vextrace::tools
