#pragma once

#include <string>
#include <string_view>

namespace vextrace::tools {

/// The text with control characters, characters that are invisible or change the direction of
/// writing, backslashes and bytes that are no UTF-8 written as escapes such as \x1b, so that it can
/// neither steer a terminal nor deceive who reads it. Everything else stays as it is.
std::string escaped(std::string_view text);

/// Appends the same.
void appendEscaped(std::string& result, std::string_view text);

/// The name of a file for formats that hold any text: as it is, or escaped where it is no UTF-8.
std::string utf8Name(const std::string& path);

/// The name of a file for a message: "standard input" for "-", else escaped.
std::string shownName(std::string_view path);

/// The text as HTML and XML show it, between tags or in an attribute's quotes.
std::string html(std::string_view text);

}  // namespace vextrace::tools
