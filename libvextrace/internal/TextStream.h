#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <utility>

namespace vextrace::internal {

/// Appends what is written to a string.
class TextBuffer : public std::streambuf {
public:
    std::string text;

protected:
    int_type overflow(int_type c) override {
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            text += traits_type::to_char_type(c);
        }
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        text.append(characters, static_cast<size_t>(count));
        return count;
    }
};

/// A text and the stream that writes it. Lets std::bad_alloc through. A std::ostringstream does
/// not: left alone it hands out a text that lacks its end, and told to throw, it throws
/// std::ios_base::failure instead with libc++.
class TextStream {
public:
    TextStream() { os.exceptions(std::ios_base::badbit); }

    /// Gives the text away.
    std::string takeText() { return std::move(buffer.text); }

private:
    TextBuffer buffer;

public:
    std::ostream os{&buffer};
};

}  // namespace vextrace::internal
