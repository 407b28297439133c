#include "tools/export/text.h"

#include <fmt/compile.h>

#include <charconv>
#include <cmath>

namespace vextools {

namespace {

// The greatest double has 309 digits before the point, the least some 330 behind it.
constexpr size_t LONGEST_NUMBER = 350;

// Between these {fmt} writes no exponent.
constexpr double LEAST_PLAIN = 1e-4;
constexpr double GREATEST_PLAIN = 1e16;

constexpr size_t DECIMALS = 6;
constexpr uint64_t SCALE = 1'000'000;
constexpr double EXACT = 1e15;

// Writes the digits of a fraction, without zeros at the end; gives the place behind them.
char* writeFraction(char* place, uint32_t millionths) {
    for (size_t i = DECIMALS; i > 0; --i) {
        place[i - 1] = static_cast<char>('0' + millionths % 10);
        millionths /= 10;
    }
    place += DECIMALS;
    while (place[-1] == '0') {
        --place;
    }
    return place;
}

// Appends a number of few decimals, as receivers send them, much faster than the general way. A
// text of up to 15 digits that reads back as the number is the only such text, so it is the
// shortest. Gives false, with nothing appended, where there is none.
bool appendFewDecimals(std::string& text, double number) {
    const double scaled = std::fabs(number) * SCALE;
    if (!(scaled < EXACT)) {
        return false;
    }
    const auto millionths = static_cast<uint64_t>(scaled + 0.5);
    if (static_cast<double>(millionths) / SCALE != std::fabs(number)) {
        return false;
    }
    char digits[24] = {'-'};
    char* end = number < 0 ? digits + 1 : digits;
    end = std::to_chars(end, digits + sizeof(digits), millionths / SCALE).ptr;
    if (const auto fraction = static_cast<uint32_t>(millionths % SCALE); fraction != 0) {
        *end = '.';
        end = writeFraction(end + 1, fraction);
    }
    text.append(digits, static_cast<size_t>(end - digits));
    return true;
}

void appendShortest(std::string& text, double number) {
    char digits[LONGEST_NUMBER];
    const double size = std::fabs(number);
    const char* const end =
        size < LEAST_PLAIN || size >= GREATEST_PLAIN
            ? std::to_chars(digits, digits + sizeof(digits), number, std::chars_format::fixed).ptr
            : fmt::format_to(digits, FMT_COMPILE("{}"), number);
    text.append(digits, static_cast<size_t>(end - digits));
}

}  // namespace

void appendNumber(std::string& text, double number) {
    if (number == 0 && std::signbit(number)) {
        text += "-0.0";  // "-0" is an integer to some readers, which has no sign
    } else if (!appendFewDecimals(text, number)) {
        appendShortest(text, number);
    }
}

}  // namespace vextools
