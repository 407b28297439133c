#include "tools/report/squeeze.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vextrace::tools {

namespace {

constexpr unsigned HASH_BITS = 15;

size_t hashOf(std::string_view text) {
    uint32_t value = 0;
    for (const char c : text.substr(0, Squeezing::SHORTEST)) {
        value = value * 0x9E3779B1U + static_cast<unsigned char>(c);
    }
    return value * 0x9E3779B1U >> (32 - HASH_BITS);
}

// How many characters from both places on are the same.
size_t common(std::string_view text, size_t a, size_t b) {
    const size_t most = std::min(Squeezing::LONGEST, text.size() - b);
    size_t length = 0;
    while (length < most && text[a + length] == text[b + length]) {
        ++length;
    }
    return length;
}

}  // namespace

std::string squeezed(std::string_view text) {
    constexpr std::string_view DIGITS = Squeezing::DIGITS;
    std::string result;
    std::vector<size_t> latest(size_t{1} << HASH_BITS);  // place of a hash, counted from 1
    for (size_t i = 0; i < text.size();) {
        const size_t place = latest[hashOf(text.substr(i))];
        const size_t back = i + 1 - place;
        const size_t length =
            place != 0 && back <= Squeezing::FARTHEST ? common(text, place - 1, i) : 0;
        const bool isPiece = length >= Squeezing::SHORTEST;
        if (isPiece) {
            result += {Squeezing::MARK, DIGITS[back / DIGITS.size()], DIGITS[back % DIGITS.size()],
                       DIGITS[length - Squeezing::SHORTEST]};
        } else {
            result.append(text[i] == Squeezing::MARK ? 2 : 1, text[i]);
        }
        for (const size_t end = i + (isPiece ? length : 1); i < end; ++i) {
            latest[hashOf(text.substr(i))] = i + 1;
        }
    }
    return result;
}

}  // namespace vextrace::tools
