#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace vextrace::tools {

/// The text as HTML shows it, between tags or in an attribute's quotes.
std::string html(std::string_view text);

/// JSON that can stand in an element of the page: nothing in it is markup, the end of the element,
/// or a line end of scripts. ASCII alone. Bytes that are no UTF-8 become U+FFFD.
std::string jsonInPage(const nlohmann::json& value);

}  // namespace vextrace::tools
