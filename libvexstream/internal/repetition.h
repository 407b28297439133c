#pragma once

#include <cstddef>
#include <cstdint>

namespace vextrace {

/// So many bytes behind a header are looked at to tell what is there once more.
constexpr size_t EYE = 64;

/// Whether a header's bytes repeat with a period of a few bytes. Such bytes are all over other
/// data, and what they seem to say repeats with them.
bool isPeriodic(const uint8_t* header);

/// Whether the upper bytes of the time stand once more in the first bytes of the payload, and the
/// type before them, or they once more in a like step: so they do in a run of headers, and behind a
/// size field that is too large.
bool hasHeaderAgain(const uint8_t* header, size_t length);

}  // namespace vextrace
