#pragma once

#include <cstdint>
#include <optional>

#include "libvextrace/MessageBase.h"

namespace vextrace::tools {

/// How long the vehicle moved, and how fast in the mean, by the speeds that the receiver reported.
/// Between two fixes the speed is the mean of theirs. Gaps do not count.
class Motion {
public:
    /// Receivers that stand still report some speed.
    static constexpr double LEAST_SPEED = 2;  // km/h

    /// Adds a valid fix.
    /// \param speed  km/h
    /// \param gap    nanoseconds; a longer time without a speed does not count
    void add(timeStamp_t stamp, std::optional<double> speed, timeStamp_t gap);

    /// What follows is another trace.
    void endTrace() { previous.reset(); }

    /// Nanoseconds in which the speed is known, and in which it was LEAST_SPEED or more.
    uint64_t known() const { return all.time; }
    uint64_t moving() const { return fast.time; }

    /// km/h in the mean of that time; nothing where there is none.
    std::optional<double> mean() const { return all.mean(); }
    std::optional<double> meanWhileMoving() const { return fast.mean(); }

private:
    struct Sum {
        uint64_t time = 0;
        double way = 0;  // km/h times nanoseconds

        void add(uint64_t duration, double speed);
        std::optional<double> mean() const;
    };
    struct Speed {
        timeStamp_t stamp;
        double speed;
    };

    Sum all;
    Sum fast;
    std::optional<Speed> previous;
};

}  // namespace vextrace::tools
