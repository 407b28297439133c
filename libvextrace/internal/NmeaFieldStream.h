#pragma once

#include <cstddef>
#include <string_view>

namespace vextrace::internal {

/// Reads the fields of a sentence in place, with the results of std::getline on a string stream
/// over the text. The text must outlive the stream and the fields read.
class NmeaFieldStream {
public:
    explicit NmeaFieldStream(std::string_view sentence)
        : next(sentence.data()), end(next + sentence.size()) {}

    /// Sets \p item to the text up to the \p delimiter, which is consumed, or to all the rest where
    /// there is no further delimiter; then the stream is exhausted. An exhausted stream leaves
    /// \p item as it is.
    void readField(std::string_view& item, char delimiter) {
        if (exhausted) {
            return;
        }
        // Fields are so short that a loop outruns std::memchr.
        const char* stop = next;
        while (stop != end && *stop != delimiter) {
            ++stop;
        }
        item = {next, static_cast<size_t>(stop - next)};
        exhausted = stop == end;
        next = exhausted ? end : stop + 1;
    }

private:
    const char* next;
    const char* end;
    bool exhausted = false;
};

}  // namespace vextrace::internal
