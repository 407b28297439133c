#include "tools/export/text.h"

#include <fmt/compile.h>

#include <charconv>
#include <cmath>
#include <limits>

#include "libvexstream/utc.h"

namespace vextrace::tools {

namespace {

// The greatest double has 309 digits before the point, the least some 330 behind it.
constexpr size_t LONGEST_NUMBER = 350;

// A sign, 20 digits and a point.
constexpr size_t LONGEST_SCALED = 22;

// Between these {fmt} writes no exponent.
constexpr double LEAST_PLAIN = 1e-4;
constexpr double GREATEST_PLAIN = 1e16;

constexpr double EXACT =
    1e15;  // integers below it are, and so are their quotients with powers of ten

constexpr uint64_t powerOfTen(unsigned exponent) {
    uint64_t power = 1;
    for (; exponent > 0; --exponent) {
        power *= 10;
    }
    return power;
}

// Of a number that is not negative.
uint64_t rounded(double number) {
    const double above = number + 0.5;
    return static_cast<uint64_t>(static_cast<int64_t>(above));  // faster than without a sign
}

// Gives the place behind it.
char* writeInteger(char* dest, uint64_t number) {
    if (number < 10) {  // as many are
        *dest = static_cast<char>('0' + number);
        return dest + 1;
    }
    return fmt::format_to(dest, FMT_COMPILE("{}"), number);
}

// Appends number / 10^DECIMALS, without zeros at the end.
template <unsigned DECIMALS>
void appendScaled(TextBuffer& text, bool isNegative, uint64_t number) {
    constexpr uint64_t ONE = powerOfTen(DECIMALS);
    char* const dest = text.room(LONGEST_SCALED);
    *dest = '-';
    char* end = writeInteger(dest + (isNegative ? 1 : 0), number / ONE);
    if (uint64_t fraction = number % ONE; fraction != 0) {
        *end = '.';
        for (unsigned i = DECIMALS; i > 0; --i) {
            end[i] = static_cast<char>('0' + fraction % 10);
            fraction /= 10;
        }
        end += DECIMALS + 1;
        while (end[-1] == '0') {
            --end;
        }
    }
    text.endAt(end);
}

template <unsigned DECIMALS>
void appendRounded(TextBuffer& text, double number) {
    const double scaled = std::fabs(number) * static_cast<double>(powerOfTen(DECIMALS));
    const uint64_t units = rounded(scaled);
    appendScaled<DECIMALS>(text, number < 0 && units != 0, units);
}

// Appends a number of few decimals, as receivers send them, much faster than the general way. A
// text of up to 15 digits that reads back as the number is the only such text, so it is the
// shortest. Gives false, with nothing appended, where there is none.
bool appendFewDecimals(TextBuffer& text, double number) {
    constexpr unsigned DECIMALS = 6;
    constexpr auto SCALE = static_cast<double>(powerOfTen(DECIMALS));
    const double scaled = std::fabs(number) * SCALE;
    if (!(scaled < EXACT)) {
        return false;
    }
    const uint64_t millionths = rounded(scaled);
    if (static_cast<double>(static_cast<int64_t>(millionths)) / SCALE != std::fabs(number)) {
        return false;
    }
    if (millionths % 1000 == 0) {  // as of most
        appendScaled<DECIMALS - 3>(text, number < 0, millionths / 1000);
    } else {
        appendScaled<DECIMALS>(text, number < 0, millionths);
    }
    return true;
}

void appendShortest(TextBuffer& text, double number) {
    char* const dest = text.room(LONGEST_NUMBER);
    const double size = std::fabs(number);
    const bool isPlain = size >= LEAST_PLAIN && size < GREATEST_PLAIN;
    text.endAt(
        isPlain ? fmt::format_to(dest, FMT_COMPILE("{}"), number)
                : std::to_chars(dest, dest + LONGEST_NUMBER, number, std::chars_format::fixed).ptr);
}

}  // namespace

void appendInteger(TextBuffer& text, uint64_t number) {
    constexpr size_t DIGITS = std::numeric_limits<uint64_t>::digits10 + 1;
    text.endAt(writeInteger(text.room(DIGITS), number));
}

void appendNumber(TextBuffer& text, double number) {
    if (number == 0 && std::signbit(number)) {
        text += "-0.0";  // "-0" is an integer to some readers, which has no sign
    } else if (!appendFewDecimals(text, number)) {
        appendShortest(text, number);
    }
}

void appendCoordinate(TextBuffer& text, double degrees) {
    if (degrees == 0) {
        appendNumber(text, degrees);
    } else {
        appendShortest(text, degrees);
    }
}

void appendThousandths(TextBuffer& text, double number) {
    appendRounded<3>(text, number);
}

void appendDegrees(TextBuffer& text, double degrees) {
    appendRounded<12>(text, degrees);
}

void appendUtc(TextBuffer& text, timeStamp_t stamp) {
    text.endAt(writeUtc(text.room(LONGEST_UTC), stamp));
}

}  // namespace vextrace::tools
