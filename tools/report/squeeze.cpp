#include "tools/report/squeeze.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace vextrace::tools {

namespace {

constexpr unsigned HASH_BITS = 15;

// Of as many characters as a reference stands for at least.
size_t hashOf(const char* text) {
    uint32_t value = 0;
    for (size_t i = 0; i < Squeezing::SHORTEST; ++i) {
        value = value * 0x9E3779B1U + static_cast<unsigned char>(text[i]);
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
    const size_t hashed = text.size() - std::min(text.size(), Squeezing::SHORTEST - 1);
    // Gives the place before with the same hash.
    const auto note = [&](size_t place) {
        return place < hashed ? std::exchange(latest[hashOf(text.data() + place)], place + 1) : 0;
    };
    for (size_t i = 0; i < text.size();) {
        const size_t place = note(i);
        const size_t back = i + 1 - place;
        const size_t length =
            place != 0 && back <= Squeezing::FARTHEST ? common(text, place - 1, i) : 0;
        const bool isPiece = length >= Squeezing::SHORTEST;
        if (isPiece) {
            result += {Squeezing::MARK, DIGITS[back / DIGITS.size()], DIGITS[back % DIGITS.size()],
                       DIGITS[length - Squeezing::SHORTEST]};
        } else {
            result += text[i];
            if (text[i] == Squeezing::MARK) {
                result += Squeezing::MARK;
            }
        }
        for (const size_t end = i + (isPiece ? length : 1); ++i < end;) {
            note(i);
        }
    }
    return result;
}

}  // namespace vextrace::tools
