#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/report/Frame.h"
#include "tools/report/Moment.h"
#include "tools/report/Outline.h"
#include "tools/report/Stretches.h"
#include "tools/report/Track.h"
#include "tools/trace/Path.h"

namespace vextrace::tools {

/// Tells which stretch a fix belongs to: fixes and recorded time are divided alike, so that neither
/// a long time nor many fixes fall into one.
class Division {
public:
    /// \param drives  all that will be divided
    /// \param most    fixes that have a stretch each; where there are more, a fifth as many
    ///                stretches are made, for of each some five fixes are kept
    Division(const std::vector<Outline>& drives, uint64_t most);

    /// \param recorded  since the fix before
    uint64_t next(timeStamp_t recorded);

private:
    uint64_t fixes = 0;
    double ofFix = 0;
    double ofNanosecond = 0;
    double position = 0;
};

/// A drive as it is drawn.
struct DrawnDrive {
    Track track;
    std::optional<Frame> frame;   ///< nothing where no fix is valid
    std::vector<Moment> moments;  ///< in order of time
    std::string start, end;       ///< place and time, for people
    Fix first;                    ///< the first valid one
};

/// Draws a drive whose outline is known, in memory that depends on the precision alone.
class Drive {
public:
    /// \param ofAll       the division that all drives share
    /// \param mostPoints  of the track
    Drive(const Outline& outline, Division& ofAll, timeStamp_t gap, size_t mostPoints);

    /// \param message  in its byte-array form
    /// \param number   of the message in its trace
    void add(const Fix& fix, std::span<const uint8_t> message, uint64_t number);

    /// To be called once, behind all fixes.
    DrawnDrive finish();

private:
    void follow(const Follower::Step& step, Moment& moment);
    void addEnds();

    Division& division;
    Follower follower;
    Stretches stretches;
    Path path;
    DrawnDrive drawn;
};

}  // namespace vextrace::tools
