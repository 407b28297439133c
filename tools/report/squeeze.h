#pragma once

#include <string>
#include <string_view>

namespace vextrace::tools {

/// How pieces that were there before are told in a squeezed text.
struct Squeezing {
    /// Stands before a reference; twice in a row for itself.
    static constexpr char MARK = '~';

    /// Digits of a reference: two say how far back the piece begins, one how long it is beyond
    /// SHORTEST. None of them is special in HTML, JSON or here.
    static constexpr std::string_view DIGITS =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz!#$%()*+,-./:;=?@[]^_`{|} ";

    /// A reference has four characters.
    static constexpr size_t SHORTEST = 5;
    static constexpr size_t LONGEST = SHORTEST + DIGITS.size() - 1;
    static constexpr size_t FARTHEST = DIGITS.size() * DIGITS.size() - 1;
};

/// The text with what stood in it shortly before told by references: trace lines become a third to
/// a fifth as long, and the page's script needs a dozen lines to expand them.
std::string squeezed(std::string_view text);

}  // namespace vextrace::tools
