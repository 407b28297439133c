#include "tests/model/Comparison.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "tests/support/doubleBits.h"

namespace {

std::string quoted(const std::string& text) {
    std::ostringstream os;
    os << std::hex << std::setfill('0') << '"';
    for (const char c : text) {
        if (c >= ' ' && c <= '~' && c != '"' && c != '\\') {
            os << c;
        } else {
            os << "\\x" << std::setw(2) << static_cast<unsigned>(static_cast<unsigned char>(c));
        }
    }
    os << "\" (" << std::dec << text.size() << " bytes)";
    return os.str();
}

std::string described(double value) {
    std::ostringstream os;
    os << std::setprecision(17) << value << " (bits " << std::hex << std::setfill('0')
       << std::setw(16) << bitsOf(value) << ')';
    return os.str();
}

// Whether two results agree but for the digits that excess precision changes. A coordinate is
// computed by way of numbers up to 100 times 65535.
bool agreeAsExtended(double library, double model) {
    constexpr double LARGEST_ON_THE_WAY = 100.0 * 65535;
    constexpr double PRECISION = 1e-15;
    return std::abs(library - model) <= PRECISION * std::max(std::abs(model), LARGEST_ON_THE_WAY);
}

constexpr bool ROUNDS_TO_DOUBLE = FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1;

}  // namespace

void Comparison::found(const std::string& what) {
    for (const std::string& place : places) {
        difference += place + ": ";
    }
    difference += what;
}

void Comparison::contrast(const char* what, const std::string& library, const std::string& model) {
    found(std::string(what) + "\n  library: " + library + "\n  model:   " + model);
}

void Comparison::equal(const char* what, const std::string& library, const std::string& model) {
    if (!failed() && library != model) {
        contrast(what, quoted(library), quoted(model));
    }
}

void Comparison::equal(const char* what, uint64_t library, uint64_t model) {
    if (!failed() && library != model) {
        contrast(what, std::to_string(library), std::to_string(model));
    }
}

void Comparison::equalAnswers(const char* what, bool library, bool model) {
    if (!failed() && library != model) {
        contrast(what, library ? "true" : "false", model ? "true" : "false");
    }
}

void Comparison::equalBits(const char* what, double library, double model) {
    if (!failed() && bitsOf(library) != bitsOf(model)) {
        contrast(what, described(library), described(model));
    }
}

void Comparison::equalResults(const char* what, double library, double model) {
    if (ROUNDS_TO_DOUBLE || !agreeAsExtended(library, model)) {
        equalBits(what, library, model);
    }
}

void Comparison::holds(const char* what, bool condition) {
    if (!failed() && !condition) {
        found(std::string("does not hold: ") + what);
    }
}
