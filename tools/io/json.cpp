#include "tools/io/json.h"

#include <fmt/core.h>

#include <cmath>
#include <cstdint>

#include "tools/io/utf8.h"

namespace vextrace::tools {

namespace {

constexpr uint32_t REPLACEMENT = 0xFFFD;
constexpr uint32_t SUPPLEMENTARY = 0x10000;

// What stands for itself within a text, in JSON as in HTML.
bool isPlain(char c) {
    return c >= ' ' && c <= '~' && c != '"' && c != '\\' && c != '<' && c != '>' && c != '&';
}

void appendUnit(std::string& text, uint32_t unit) {
    text += fmt::format("\\u{:04x}", unit);
}

// As UTF-16, where a character beyond the first 65,536 is two units.
void appendCharacter(std::string& text, uint32_t character) {
    if (character < SUPPLEMENTARY) {
        appendUnit(text, character);
    } else {
        appendUnit(text, 0xD800 + ((character - SUPPLEMENTARY) >> 10));
        appendUnit(text, 0xDC00 + ((character - SUPPLEMENTARY) & 0x3FF));
    }
}

std::string quoted(std::string_view rest) {
    std::string text = "\"";
    while (!rest.empty()) {
        const char c = rest.front();
        const size_t length = characterLength(rest);
        if (isPlain(c)) {
            text += c;
        } else if (c == '\\') {
            text += "\\\\";
        } else if (c == '\n') {
            text += "\\n";
        } else {
            appendCharacter(text, length == 0 ? REPLACEMENT : codePoint(rest.substr(0, length)));
        }
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return text += '"';
}

}  // namespace

Json::Json(double value) : written(std::isfinite(value) ? fmt::format("{}", value) : "null") {}

Json::Json(std::string_view text) : written(quoted(text)) {}

Json::Json(std::initializer_list<Member> members) : Json(object()) {
    for (const Member& member : members) {
        add(member.name, member.value);
    }
}

Json Json::ofText(const char* text) {
    Json json;
    json.written = text;
    return json;
}

void Json::add(const Json& value) {
    append(value.written);
}

void Json::add(std::string_view name, const Json& value) {
    append(quoted(name) + ':' + value.written);
}

// In front of the bracket at the end.
void Json::append(std::string_view piece) {
    const char bracket = written.back();
    written.back() = ',';
    if (written.size() == 2) {
        written.pop_back();
    }
    written += piece;
    written += bracket;
}

// A quotation mark within a text is written as its number, so every other one begins or ends one.
std::string Json::lines() const {
    std::string result;
    size_t depth = 0;
    bool inText = false;
    for (size_t i = 0; i < written.size(); ++i) {
        const char c = written[i];
        inText = inText != (c == '"');
        if (inText) {
            result += c;
            continue;
        }
        const bool opens = c == '[' || c == '{';
        const bool closes = c == ']' || c == '}';
        const bool isEmpty = opens && (written[i + 1] == ']' || written[i + 1] == '}');
        if (isEmpty) {
            result += c;
            result += written[++i];
            continue;
        }
        depth += opens ? 1 : 0;
        depth -= closes ? 1 : 0;
        if (closes) {
            result += '\n' + std::string(depth, ' ');
        }
        result += c;
        if (opens || c == ',') {
            result += '\n' + std::string(depth, ' ');
        } else if (c == ':') {
            result += ' ';
        }
    }
    return result;
}

}  // namespace vextrace::tools
