#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "libvexstream/ByteSource.h"
#include "libvexstream/FixChooser.h"
#include "libvexstream/TraceReader.h"
#include "python/FixColumns.h"
#include "python/sources.h"

namespace vextrace::python {

/// What was found in a trace.
struct Findings {
    uint64_t bytes = 0;
    uint64_t messages = 0;
    uint64_t places = 0;        // of damage
    uint64_t damagedBytes = 0;  // in all of them
    uint64_t firstDamage = 0;   // offset
    std::string firstReason;
    bool foundMessage = false;

    bool isTrace() const { return foundMessage || places == 0; }

    /// What was found behind it, in the same trace.
    void add(const Findings& more);
};

/// Which trace, and which of its fixes.
struct FixWish {
    uint32_t trace;  ///< its number
    FixChoice choice;
};

/// The fixes of a part of a trace, behind those that are there.
Findings readFixes(ByteSource& bytes, const FixWish& wish, const TraceRange& range,
                   FixColumns& columns);

/// The same of a whole trace whose bytes can be read from any place on, by several threads: spans
/// of it are read side by side. What is carried from message to message is looked for in front of
/// each span; where that turns out to be something else than what the spans before it leave, the
/// span is read once more.
///
/// \param span  bytes of one
Findings readFixesSideBySide(const Input& input, const FixWish& wish, uint64_t span,
                             FixColumns& columns);

/// How many threads it takes.
size_t threadsOf();

}  // namespace vextrace::python
