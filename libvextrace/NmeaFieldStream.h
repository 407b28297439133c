#pragma once

#include <cstring>
#include <string_view>

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
        if (next == nullptr) {
            return;
        }
        const void* found = std::memchr(next, delimiter, static_cast<size_t>(end - next));
        const char* const stop = found != nullptr ? static_cast<const char*>(found) : end;
        item = {next, static_cast<size_t>(stop - next)};
        next = found != nullptr ? stop + 1 : nullptr;
    }

private:
    const char* next;  // null once exhausted
    const char* end;
};
