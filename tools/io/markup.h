#pragma once

#include <string>
#include <string_view>

namespace vextrace::tools {

/// The text as HTML and XML show it, between tags or in an attribute's quotes.
std::string html(std::string_view text);

}  // namespace vextrace::tools
