#pragma once

#include <cstdint>
#include <string>

#include "libvexstream/TraceReader.h"

namespace vextrace::tools {

/// Tells people of the damage in a trace: a line for each of the first places, naming the byte
/// where the last sound message ended and how many bytes were passed over, and a count of the
/// others.
class DamageLog {
public:
    /// \param name  of the trace, as it is shown
    explicit DamageLog(std::string name);

    /// Of a trace without any sound message it says that it is none.
    void add(const TraceItem& damage);

    /// The trace has ended: tells what was held back.
    void finish();

    /// Places so far.
    uint64_t places() const { return count; }

    /// Bytes passed over so far.
    uint64_t bytes() const { return passedOver; }

private:
    std::string name;
    uint64_t count = 0;
    uint64_t passedOver = 0;
    uint64_t heldBack = 0;  // bytes of the places that were not told
};

}  // namespace vextrace::tools
