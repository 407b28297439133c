#include "tools/io/markup.h"

namespace vextrace::tools {

namespace {

template <class Replacement>
std::string replaced(std::string_view text, Replacement replacement) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const std::string_view other = replacement(c);
        if (other.empty()) {
            result += c;
        } else {
            result += other;
        }
    }
    return result;
}

}  // namespace

std::string html(std::string_view text) {
    return replaced(text, [](char c) -> std::string_view {
        switch (c) {
            case '&':
                return "&amp;";
            case '<':
                return "&lt;";
            case '>':
                return "&gt;";
            case '"':
                return "&quot;";
            case '\'':
                return "&#39;";
            default:
                return {};
        }
    });
}

}  // namespace vextrace::tools
