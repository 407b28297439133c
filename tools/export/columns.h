#pragma once

#include <array>

#include "libvexstream/Fix.h"
#include "tools/io/TextBuffer.h"

namespace vextrace::tools {

/// One value of a fix, as tables name and hold it.
struct Column {
    const char* name;  ///< with its unit
    bool isText;       ///< in contrast to a number, true or false
    /// Appends the value; nothing where it is missing, and then gives false.
    bool (*append)(TextBuffer& text, const Fix& fix);
};

constexpr size_t COLUMN_COUNT = 12;

/// The columns in their order.
extern const std::array<Column, COLUMN_COUNT> COLUMNS;

}  // namespace vextrace::tools
