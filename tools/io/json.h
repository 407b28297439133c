#pragma once

#include <concepts>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vextrace::tools {

/// A JSON value, held as its text. That is ASCII alone, and may stand in an element of an HTML
/// page: nothing in it is markup. Texts may hold any bytes; those that are no UTF-8 become U+FFFD.
class Json {
public:
    struct Member;

    // NOLINTBEGIN(google-explicit-constructor): a value is JSON wherever that is asked for
    Json() : written("null") {}
    Json(bool value) : written(value ? "true" : "false") {}
    Json(std::integral auto value) : written(std::to_string(value)) {}
    /// The shortest text that reads back as the same number; null where it is not finite.
    Json(double value);
    Json(std::string_view text);
    Json(const std::string& text) : Json(std::string_view(text)) {}
    Json(const char* text) : Json(std::string_view(text)) {}
    /// null where there is no value.
    template <class Value>
    Json(const std::optional<Value>& value) : Json(value ? Json(*value) : Json()) {}
    /// An array.
    template <class Value>
    Json(const std::vector<Value>& values) : Json(array()) {
        for (const Value& value : values) {
            add(value);
        }
    }
    /// An object: {{"name", value}, {"other name", value}}.
    Json(std::initializer_list<Member> members);
    // NOLINTEND(google-explicit-constructor)

    static Json array() { return ofText("[]"); }
    static Json object() { return ofText("{}"); }

    /// Adds a value to an array, or a member to an object.
    void add(const Json& value);
    void add(std::string_view name, const Json& value);

    /// In one line.
    const std::string& text() const { return written; }

    /// For people, too: a line for each value, indented by its depth.
    std::string lines() const;

private:
    static Json ofText(const char* text);
    void append(std::string_view piece);

    std::string written;
};

struct Json::Member {
    std::string_view name;
    Json value;
};

}  // namespace vextrace::tools
