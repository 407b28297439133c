#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vextrace {

/// The first fields of a sentence, its address among them; empty where it has fewer. Each ends at a
/// comma; the last one of the sentence at "*" or the line end.
template <size_t COUNT>
std::array<std::string_view, COUNT> fieldsOf(std::string_view sentence) {
    std::array<std::string_view, COUNT> fields;
    const char* next = sentence.data();
    const char* const end = next + sentence.size();
    for (std::string_view& field : fields) {
        const char* const begin = next;
        while (next != end && *next != ',' && *next != '*' && *next != '\r' && *next != '\n') {
            ++next;
        }
        field = {begin, static_cast<size_t>(next - begin)};
        if (next == end || *next != ',') {
            break;
        }
        ++next;
    }
    return fields;
}

}  // namespace vextrace
