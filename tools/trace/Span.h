#pragma once

#include <limits>

#include "libvextrace/MessageBase.h"

namespace vextrace::tools {

/// The time stamps that are asked for.
struct Span {
    timeStamp_t from = 0;
    timeStamp_t until = std::numeric_limits<timeStamp_t>::max();  ///< included

    bool holds(timeStamp_t stamp) const { return from <= stamp && stamp <= until; }
};

}  // namespace vextrace::tools
