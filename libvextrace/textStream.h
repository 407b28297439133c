#pragma once

#include <sstream>

/// Collects a text. Passes std::bad_alloc on, where a string stream would swallow it and hand out a
/// text that lacks its end.
class TextStream : public std::ostringstream {
public:
    TextStream() { exceptions(std::ios_base::badbit); }
};
