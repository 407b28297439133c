#pragma once

#include <iomanip>
#include <sstream>
#include <string>

/// The number with so many decimals, never with an exponent.
inline std::string decimal(double number, int decimals) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << number;
    return text.str();
}
