#pragma once

#include <cstdint>
#include <optional>

#include "libvexstream/Fix.h"
#include "tools/report/Frame.h"

namespace vextrace::tools {

/// Follows a drive from fix to fix.
class Follower {
public:
    /// \param gap  nanoseconds; fixes that are farther apart are not recorded between
    explicit Follower(timeStamp_t gapLength) : gap(gapLength) {}

    struct Step {
        timeStamp_t recorded;  ///< nanoseconds from the fix before, the gap's length at most
        double longitude;      ///< of a valid fix: as continued() from the one before
        bool followsGap;       ///< of a valid fix: no line leads here from the one before
    };

    Step step(const Fix& fix);

private:
    timeStamp_t gap;
    std::optional<timeStamp_t> stamp;
    std::optional<timeStamp_t> validStamp;
    double eastward = 0;
};

/// What must be known of a drive before it is drawn: how much there is of it, and where.
class Outline {
public:
    explicit Outline(timeStamp_t gap) : follower(gap) {}

    void add(const Fix& fix);

    uint64_t fixes = 0;
    timeStamp_t recorded = 0;      ///< nanoseconds, without gaps
    double fastest = 0;            ///< km/h, of valid fixes
    std::optional<Extent> extent;  ///< of valid fixes; nothing where there is none

private:
    Follower follower;
};

}  // namespace vextrace::tools
