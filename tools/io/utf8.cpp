#include "tools/io/utf8.h"

#include <algorithm>

namespace vextrace::tools {

namespace {

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

}  // namespace

size_t characterLength(std::string_view text) {
    const auto at = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = at(0);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC2 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF5 ? 4
                                         : 0;
    if (length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if (!isContinuation(at(i))) {
            return 0;
        }
    }
    const bool misplaced = (first == 0xE0 && at(1) < 0xA0) || (first == 0xED && at(1) > 0x9F) ||
                           (first == 0xF0 && at(1) < 0x90) || (first == 0xF4 && at(1) > 0x8F);
    return misplaced ? 0 : length;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

size_t characterCount(std::string_view text) {
    return text.size() - static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
               return isContinuation(static_cast<unsigned char>(c));
           }));
}

uint32_t codePoint(std::string_view character) {
    constexpr unsigned char FIRST_BITS[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    uint32_t number = static_cast<unsigned char>(character[0]) & FIRST_BITS[character.size()];
    for (const char c : character.substr(1)) {
        number = number << 6 | (static_cast<unsigned char>(c) & 0x3F);
    }
    return number;
}

}  // namespace vextrace::tools
