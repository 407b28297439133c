#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "libvexstream/sentence.h"

namespace vextrace {

/// Gives the fields of a sentence one after the other, the address first; empty ones behind the
/// last. Fields are so short that loops outrun std::find.
class FieldReader {
public:
    explicit FieldReader(std::string_view sentence)
        : place(sentence.data()), end(place + withoutLineEnd(sentence).size()) {}

    /// Up to the next comma or "*" or the line end.
    std::string_view next() { return endField(place); }

    /// Passes over so many.
    void skip(size_t count) {
        for (; end - place >= WORD_SIZE; place += WORD_SIZE) {
            uint64_t word = 0;
            std::memcpy(&word, place, sizeof(word));
            const size_t commas = countBytes(word, ',');
            if (commas >= count || countBytes(word, '*') != 0) {
                break;
            }
            count -= commas;
        }
        for (; count > 0; --count) {
            next();
        }
    }

    /// The next character of the field in hand.
    const char* position() const { return place; }

    /// Passes over digits of the field in hand and appends them to a number; gives how many there
    /// are. More than 19 make none.
    size_t readDigits(uint64_t& number) {
        const char* const begin = place;
        const char* next = begin;
        for (; next != end && *next >= '0' && *next <= '9'; ++next) {
            number = number * 10 + static_cast<unsigned>(*next - '0');
        }
        place = next;
        return static_cast<size_t>(next - begin);
    }

    /// Passes over a character of the field in hand where it is this one; gives whether it is.
    bool read(char character) {
        const bool isNext = place != end && *place == character;
        place += isNext ? 1 : 0;
        return isNext;
    }

    /// Passes over what is left of the field in hand; gives the field from there on.
    std::string_view endField(const char* begin) {
        const char* next = place;
        while (next != end && *next != ',' && *next != '*') {
            ++next;
        }
        place = next + (next != end && *next == ',' ? 1 : 0);
        return {begin, static_cast<size_t>(next - begin)};
    }

private:
    static constexpr ptrdiff_t WORD_SIZE = sizeof(uint64_t);

    // How many of the eight bytes are this character.
    static size_t countBytes(uint64_t word, char character) {
        constexpr uint64_t ONES = 0x0101010101010101;
        constexpr uint64_t LOW_BITS = 0x7F * ONES;
        const uint64_t other = word ^ (static_cast<unsigned char>(character) * ONES);
        const uint64_t equal = ~(((other & LOW_BITS) + LOW_BITS) | other | LOW_BITS);  // 0x80 each
        return static_cast<size_t>((equal >> 7) * ONES >> 56);
    }

    const char* place;
    const char* end;
};

}  // namespace vextrace
