#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tools/report/Series.h"
#include "tools/report/Track.h"

namespace vextrace::tools {

/// The pictures of a drive: its fixes over time and the way it took, in bounded memory.
class Drive {
public:
    /// \param gap  nanoseconds; lines are open where fixes are farther apart
    explicit Drive(timeStamp_t gap);

    /// Adds the fix of a message. One with a wrong checksum, or that repeats another, is passed
    /// over.
    /// \param number  of the message in its trace
    /// \param trace   which one, counted from 0
    void add(const Fix& fix, std::unique_ptr<GPSTraceMessage> message, uint64_t number,
             size_t trace);

    /// What the page shows of it.
    struct Pictures {
        std::string track;                 ///< HTML
        std::string data;                  ///< JSON
        std::vector<std::string> leftOut;  ///< what is not on the page, for people
    };

    /// Takes at most so many bytes for each. Precision is let go until they suffice.
    /// \param traces  their names, as they are shown
    Pictures pictures(const std::vector<std::string>& traces, size_t bytesOfTrack,
                      size_t bytesOfData);

private:
    void follow(Moment& moment);
    void draw(Pictures& pictures, const std::vector<std::string>& traces, size_t bytesOfTrack,
              size_t bytesOfData);
    std::string drawnText(size_t drawn) const;

    timeStamp_t gap;
    Series series;
    Track track;
    MomentPtr first, last;  ///< of the track
};

}  // namespace vextrace::tools
