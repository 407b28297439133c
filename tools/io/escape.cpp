#include "tools/io/escape.h"

#include <fmt/core.h>

#include <cstdint>

#include "tools/io/utf8.h"

namespace vextrace::tools {

namespace {

// C0 and C1 controls and DEL; the C1 controls are the two-byte characters U+0080 to U+009F.
bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    return first < 0x20 || first == 0x7F ||
           (character.size() == 2 && first == 0xC2 &&
            static_cast<unsigned char>(character[1]) < 0xA0);
}

// Nearly all texts are such. The loop has no branches, so that it takes many bytes at once.
bool isPlainAscii(std::string_view text) {
    unsigned special = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        special |= static_cast<unsigned>(byte < 0x20) | static_cast<unsigned>(byte > 0x7E) |
                   static_cast<unsigned>(byte == '\\');
    }
    return special == 0;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    appendEscaped(result, text);
    return result;
}

void appendEscaped(std::string& result, std::string_view text) {
    if (isPlainAscii(text)) {
        result += text;
        return;
    }
    while (!text.empty()) {
        const size_t length = characterLength(text);
        const std::string_view character = text.substr(0, length == 0 ? 1 : length);
        if (character == "\\") {
            result += "\\\\";
        } else if (length == 0 || isControl(character)) {
            for (const char byte : character) {
                result += fmt::format("\\x{:02x}", static_cast<uint8_t>(byte));
            }
        } else {
            result += character;
        }
        text.remove_prefix(character.size());
    }
}

std::string shownName(std::string_view path) {
    return path == "-" ? "standard input" : escaped(path);
}

}  // namespace vextrace::tools
