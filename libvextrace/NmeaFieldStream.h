#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace vextrace {

/// Reads the fields of a sentence in place, with the results of std::getline on a string stream
/// over the text. The text must outlive the stream and the fields read.
class NmeaFieldStream {
public:
    explicit NmeaFieldStream(std::string_view sentence) : rest(sentence) {}

    /// Sets \p item to the text up to the \p delimiter, which is consumed, or to all the rest where
    /// there is no further delimiter; then the stream is exhausted. An exhausted stream leaves
    /// \p item as it is.
    void readField(std::string_view& item, char delimiter) {
        if (exhausted) {
            return;
        }
        const size_t end = rest.find(delimiter);
        exhausted = end == std::string_view::npos;
        item = rest.substr(0, end);
        rest.remove_prefix(exhausted ? rest.size() : end + 1);
    }

private:
    std::string_view rest;
    bool exhausted = false;
};

}  // namespace vextrace
