#include "tools/trace/Motion.h"

namespace vextrace::tools {

void Motion::Sum::add(uint64_t duration, double speed) {
    time += duration;
    way += static_cast<double>(duration) * speed;
}

std::optional<double> Motion::Sum::mean() const {
    return time == 0 ? std::nullopt : std::optional(way / static_cast<double>(time));
}

void Motion::add(timeStamp_t stamp, std::optional<double> speed, timeStamp_t gap) {
    if (!speed) {
        return;
    }
    if (previous && previous->stamp <= stamp && stamp - previous->stamp <= gap) {
        const timeStamp_t duration = stamp - previous->stamp;
        const double mean = (previous->speed + *speed) / 2;
        all.add(duration, mean);
        if (mean >= LEAST_SPEED) {
            fast.add(duration, mean);
        }
    }
    previous = {stamp, *speed};
}

}  // namespace vextrace::tools
