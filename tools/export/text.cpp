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

constexpr unsigned FEW_DECIMALS = 6;
constexpr double EXACT =
    1e15;  // integers below it are, and so are their quotients with powers of ten
constexpr uint64_t POWERS_OF_TEN[] = {1,
                                      10,
                                      100,
                                      1'000,
                                      10'000,
                                      100'000,
                                      1'000'000,
                                      10'000'000,
                                      100'000'000,
                                      1'000'000'000,
                                      10'000'000'000,
                                      100'000'000'000,
                                      1'000'000'000'000};

// Appends number / 10^decimals, without zeros at the end.
void appendScaled(std::string& text, bool isNegative, uint64_t number, unsigned decimals) {
    char digits[24] = {'-'};
    char* end = isNegative ? digits + 1 : digits;
    end = std::to_chars(end, digits + sizeof(digits), number / POWERS_OF_TEN[decimals]).ptr;
    if (uint64_t fraction = number % POWERS_OF_TEN[decimals]; fraction != 0) {
        *end = '.';
        for (unsigned i = decimals; i > 0; --i) {
            end[i] = static_cast<char>('0' + fraction % 10);
            fraction /= 10;
        }
        end += decimals + 1;
        while (end[-1] == '0') {
            --end;
        }
    }
    text.append(digits, static_cast<size_t>(end - digits));
}

// Appends a number of few decimals, as receivers send them, much faster than the general way. A
// text of up to 15 digits that reads back as the number is the only such text, so it is the
// shortest. Gives false, with nothing appended, where there is none.
bool appendFewDecimals(std::string& text, double number) {
    constexpr auto SCALE = static_cast<double>(POWERS_OF_TEN[FEW_DECIMALS]);
    const double scaled = std::fabs(number) * SCALE;
    if (!(scaled < EXACT)) {
        return false;
    }
    const auto millionths = static_cast<uint64_t>(scaled + 0.5);
    if (static_cast<double>(millionths) / SCALE != std::fabs(number)) {
        return false;
    }
    appendScaled(text, number < 0, millionths, FEW_DECIMALS);
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

void appendRounded(std::string& text, double number, unsigned decimals) {
    const double scaled = std::fabs(number) * static_cast<double>(POWERS_OF_TEN[decimals]);
    const auto rounded = static_cast<uint64_t>(scaled + 0.5);
    appendScaled(text, number < 0 && rounded != 0, rounded, decimals);
}

}  // namespace vextools
