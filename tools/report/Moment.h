#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvextrace/GPSTraceMessage.h"

namespace vextrace::tools {

/// A fix that can be pointed at on the page.
struct Moment {
    /// What is shown of its message.
    struct Texts {
        std::string position;   ///< as the RDB text has it, without altitude; empty if not valid
        std::string traceLine;  ///< up to LONGEST_LINE bytes of it
        size_t further = 0;     ///< bytes of the trace line behind these

        /// The trace line, escaped. \param longest  what is beyond so many bytes is counted
        std::string shownLine(size_t longest = LONGEST_LINE) const;
    };

    /// A longer trace line is cut: a page has room for thousands of ordinary ones.
    static constexpr size_t LONGEST_LINE = 1500;

    Fix fix;
    uint64_t number = 0;  ///< of the message in its trace
    double way = 0;       ///< metres from the first position of the drive
    double x = 0, y = 0;  ///< in the drive's frame, where the fix is valid
    /// Whether the line of a value (a bit each, 1 << Followed) begins anew here: behind a gap.
    unsigned breaks = 0;
    unsigned run = 0;      ///< counts up where time goes back
    uint64_t stretch = 0;  ///< of its drive, that it is kept of
    Texts texts;           ///< of those that are drawn
};

/// \param message  in its byte-array form, sound
/// \param fix      its fix
Moment::Texts textsOf(std::span<const uint8_t> message, const Fix& fix);

/// A position in the form of the RDB text: "48°7.038 N, 11°31.000 E".
std::string positionText(double latitude, double longitude);

}  // namespace vextrace::tools
