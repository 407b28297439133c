#include "libvextrace/nmeaNumber.h"

#include <cfloat>
#include <cstdlib>
#include <string>

namespace {

// So many digits are exact in a double, and so is the power of ten below them: one division gives
// the correctly rounded quotient, which is what strtod gives.
constexpr size_t MAX_REAL_DIGITS = 15;
constexpr double POWERS_OF_TEN[MAX_REAL_DIGITS + 1] = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// Where quotients are kept in more precision than double's they are rounded twice.
constexpr bool DIVISION_ROUNDS_ONCE = FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1;

// So many digits fit a long of 32 bits.
constexpr size_t MAX_INTEGER_DIGITS = 9;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

unsigned digitValue(char c) {
    return static_cast<unsigned>(c - '0');
}

}  // namespace

NmeaNumberReader::NmeaNumberReader() {
    // Unlike localeconv, strtod may be called by several threads at once.
    char* end = nullptr;
    static_cast<void>(std::strtod("0.", &end));
    pointIsFullStop = *end == '\0';
}

long NmeaNumberReader::integer(std::string_view text) {
    unsigned value = 0;
    size_t digits = 0;
    while (digits < text.size() && digits <= MAX_INTEGER_DIGITS && isDigit(text[digits])) {
        value = value * 10 + digitValue(text[digits]);
        ++digits;
    }
    if (digits > 0 && digits <= MAX_INTEGER_DIGITS) {
        return static_cast<long>(value);
    }
    return text.empty() ? 0 : std::strtol(std::string(text).c_str(), nullptr, 10);
}

double NmeaNumberReader::real(std::string_view text) const {
    const auto convert = [text] { return std::strtod(std::string(text).c_str(), nullptr); };
    if (!DIVISION_ROUNDS_ONCE || text.size() > MAX_REAL_DIGITS + 1) {
        return convert();
    }
    uint64_t value = 0;
    size_t digits = 0;
    size_t decimals = 0;
    bool point = false;
    for (const char c : text) {
        if (isDigit(c)) {
            value = value * 10 + digitValue(c);
            ++digits;
            decimals += point ? 1 : 0;
        } else if (c == '.' && pointIsFullStop && !point) {
            point = true;
        } else {
            return convert();
        }
    }
    if (digits == 0 || digits > MAX_REAL_DIGITS) {
        return text.empty() ? 0.0 : convert();
    }
    return static_cast<double>(value) / POWERS_OF_TEN[decimals];
}

NmeaCoordinate::NmeaCoordinate(const NmeaNumberReader& number, std::string_view text)
    : deg(static_cast<uint16_t>(NmeaNumberReader::integer(text) / 100)),
      rem(number.real(text) - 100 * deg) {}

double NmeaCoordinate::degrees() const {
    return deg + rem / 60.0;
}
