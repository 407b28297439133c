#pragma once

#include <ios>
#include <ostream>

namespace vextrace::internal {

/// The format state of trace texts: hexadecimal and fixed notation, every other flag cleared, and
/// "0" as fill character. Restoring is a call, not a destructor, because a stream that throws is
/// left in the trace format.
class TraceFormat {
public:
    explicit TraceFormat(std::ostream& stream)
        : os(stream),
          oldflags(stream.flags(std::ios_base::hex | std::ios_base::fixed)),
          oldfill(stream.fill('0')) {}

    void restore() {
        os.flags(oldflags);
        os.fill(oldfill);
    }

private:
    std::ostream& os;
    std::ios_base::fmtflags oldflags;
    char oldfill;
};

}  // namespace vextrace::internal
