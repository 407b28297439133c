#include "tools/report/squeeze.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace vextrace::tools {

namespace {

struct Piece {
    size_t back = 0;
    size_t length = 0;
};

// Where each place of the text was like an earlier one, the latest first.
class Places {
public:
    explicit Places(std::string_view ofText)
        : text(ofText), latest(size_t{1} << HASH_BITS, NONE), earlier(WINDOW, NONE) {}

    void add(size_t place) {
        if (place + Squeezing::SHORTEST <= text.size()) {
            size_t& head = latest[hash(place)];
            earlier[place % WINDOW] = head;
            head = place;
        }
    }

    // The longest of the latest pieces that are like what stands here; its length is 0 if none is.
    Piece longest(size_t place) const {
        Piece best;
        if (place + Squeezing::SHORTEST > text.size()) {
            return best;
        }
        size_t candidate = latest[hash(place)];
        for (int i = 0; i < TRIES && candidate != NONE && place - candidate <= Squeezing::FARTHEST;
             ++i, candidate = earlier[candidate % WINDOW]) {
            const size_t length = common(candidate, place);
            if (length >= Squeezing::SHORTEST && length > best.length) {
                best = {place - candidate, length};
            }
        }
        return best;
    }

private:
    static constexpr int HASH_BITS = 15;
    static constexpr int TRIES = 32;
    static constexpr size_t WINDOW = Squeezing::FARTHEST + 1;
    static constexpr size_t NONE = std::numeric_limits<size_t>::max();

    size_t hash(size_t place) const {
        uint32_t value = 0;
        for (const char c : text.substr(place, Squeezing::SHORTEST)) {
            value = value * 0x9E3779B1U + static_cast<unsigned char>(c);
        }
        return value * 0x9E3779B1U >> (32 - HASH_BITS);
    }

    size_t common(size_t a, size_t b) const {
        const size_t most = std::min(Squeezing::LONGEST, text.size() - b);
        size_t length = 0;
        while (length < most && text[a + length] == text[b + length]) {
            ++length;
        }
        return length;
    }

    std::string_view text;
    std::vector<size_t> latest;   // of a hash
    std::vector<size_t> earlier;  // than a place, of the same hash; those out of reach are reused
};

}  // namespace

std::string squeezed(std::string_view text) {
    constexpr std::string_view DIGITS = Squeezing::DIGITS;
    std::string result;
    Places places(text);
    for (size_t i = 0; i < text.size();) {
        const Piece piece = places.longest(i);
        const size_t end = i + std::max<size_t>(piece.length, 1);
        if (piece.length > 0) {
            result += Squeezing::MARK;
            result += DIGITS[piece.back / DIGITS.size()];
            result += DIGITS[piece.back % DIGITS.size()];
            result += DIGITS[piece.length - Squeezing::SHORTEST];
        } else {
            result.append(text[i] == Squeezing::MARK ? 2 : 1, text[i]);
        }
        for (; i < end; ++i) {
            places.add(i);
        }
    }
    return result;
}

}  // namespace vextrace::tools
