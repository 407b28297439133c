#include "tools/io/escape.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <utility>

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

// Characters that show nothing of their own, and can hide or turn round what stands beside them:
// those of format, and those that Unicode calls default ignorable.
constexpr std::pair<uint32_t, uint32_t> INVISIBLE[] = {
    {0xAD, 0xAD},       {0x34F, 0x34F},     {0x600, 0x605},     {0x61C, 0x61C},
    {0x6DD, 0x6DD},     {0x70F, 0x70F},     {0x890, 0x891},     {0x8E2, 0x8E2},
    {0x115F, 0x1160},   {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},
    {0x202A, 0x202E},   {0x2060, 0x206F},   {0x3164, 0x3164},   {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},   {0x110BD, 0x110BD},
    {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A},
    {0xE0000, 0xE0FFF},
};

bool isInvisible(std::string_view character) {
    const uint32_t number = codePoint(character);
    return number >= std::begin(INVISIBLE)->first &&
           std::ranges::any_of(INVISIBLE, [&](const auto& range) {
               return number >= range.first && number <= range.second;
           });
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
        } else if (length == 0 || isControl(character) || isInvisible(character)) {
            for (const char byte : character) {
                result += fmt::format("\\x{:02x}", static_cast<uint8_t>(byte));
            }
        } else {
            result += character;
        }
        text.remove_prefix(character.size());
    }
}

std::string utf8Name(const std::string& path) {
    return isUtf8(path) ? path : escaped(path);
}

std::string shownName(std::string_view path) {
    return path == "-" ? "standard input" : escaped(path);
}

std::string html(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

}  // namespace vextrace::tools
