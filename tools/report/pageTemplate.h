#pragma once

#include <string_view>

namespace vextrace::tools {

/// page.html with the style and the scripts in it; what differs from drive to drive stands in it as
/// {{name}}.
std::string_view pageTemplate();

}  // namespace vextrace::tools
