#include "libvextrace/internal/NmeaNumberReader.h"

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace vextrace::internal {

namespace {

// So many digits are exact in a double, and so is the power of ten below them: one division gives
// the correctly rounded quotient, which is what strtod gives.
constexpr size_t MAX_REAL_DIGITS = 15;
constexpr double POWERS_OF_TEN[MAX_REAL_DIGITS] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};

// Where quotients are kept in more precision than double's they are rounded twice.
constexpr bool DIVISION_ROUNDS_ONCE = FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1;

// So many digits fit a long of 32 bits.
constexpr size_t MAX_INTEGER_DIGITS = 9;

// Appends the digits at the front of the text to the value; gives their number.
size_t readDigits(std::string_view text, uint64_t& value) {
    size_t count = 0;
    for (; count < text.size(); ++count) {
        const unsigned digit = static_cast<unsigned>(text[count]) - '0';
        if (digit > 9) {
            break;
        }
        value = value * 10 + digit;
    }
    return count;
}

// The C standard wants 0 where there is no number. Of a sign and no digits MinGW's strtod makes -0.
double standardReal(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    return end == text.c_str() ? 0.0 : value;
}

// Not inlined: the calls in them would make the fast conversions, which need none, slower.
[[gnu::noinline]] long standardInteger(std::string_view text) {
    return std::strtol(std::string(text).c_str(), nullptr, 10);
}

[[gnu::noinline]] NmeaNumberReader::Number standardNumber(std::string_view text) {
    if (text.empty()) {
        return {0, 0.0};
    }
    const std::string copy(text);
    return {std::strtol(copy.c_str(), nullptr, 10), standardReal(copy)};
}

}  // namespace

long NmeaNumberReader::integer(std::string_view text) {
    uint64_t value = 0;
    const size_t digits = readDigits(text.substr(0, MAX_INTEGER_DIGITS + 1), value);
    const bool fits = digits > 0 && digits <= MAX_INTEGER_DIGITS;
    return fits ? static_cast<long>(value) : standardInteger(text);
}

NmeaNumberReader::NmeaNumberReader() {
    // Unlike localeconv, strtod may be called by several threads at once.
    char* end = nullptr;
    static_cast<void>(std::strtod("0.", &end));
    pointIsFullStop = *end == '\0';
}

NmeaNumberReader::Number NmeaNumberReader::read(std::string_view text) const {
    if (!DIVISION_ROUNDS_ONCE || text.size() > MAX_REAL_DIGITS + 1) {  // one for the point
        return standardNumber(text);
    }
    uint64_t whole = 0;
    const size_t wholeDigits = readDigits(text, whole);
    uint64_t value = whole;
    size_t decimals = 0;
    size_t length = wholeDigits;
    if (pointIsFullStop && length < text.size() && text[length] == '.') {
        decimals = readDigits(text.substr(length + 1), value);
        length += 1 + decimals;
    }
    if (length < text.size() || wholeDigits == 0 || wholeDigits > MAX_INTEGER_DIGITS) {
        return standardNumber(text);
    }
    return {static_cast<long>(whole), static_cast<double>(value) / POWERS_OF_TEN[decimals]};
}

}  // namespace vextrace::internal
