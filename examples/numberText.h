#pragma once

#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>

/// The number with so many decimals, never with an exponent.
inline std::string decimal(double number, int decimals) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << number;
    return text.str();
}

/// "1 message", "2 messages".
inline std::string counted(size_t number, const std::string& noun) {
    return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
}
