#pragma once

#include <string_view>

namespace vextrace::internal {

/// The column of the type in the trace line of a GPS message. The sentences follow, a blank before
/// each.
inline constexpr std::string_view GPS_COLUMN = "  GPS         |";

/// What the trace line shows of a stored sentence. Its last character goes, whatever it is: the
/// line feed of every sentence but a bare "$G", which is stored as "$GP" and meant to be shown as
/// "$G". Then one carriage return goes.
inline std::string_view shownSentence(std::string_view sentence) {
    sentence.remove_suffix(1);
    if (!sentence.empty() && sentence.back() == '\r') {
        sentence.remove_suffix(1);
    }
    return sentence;
}

}  // namespace vextrace::internal
