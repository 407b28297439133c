#include "tools/report/Outline.h"

#include <algorithm>
#include <utility>

namespace vextrace::tools {

Follower::Step Follower::step(const Fix& fix) {
    Step step = {0, 0, false};
    const timeStamp_t before = std::exchange(stamp, fix.stamp).value_or(fix.stamp);
    step.recorded = fix.stamp > before ? std::min(fix.stamp - before, gap) : 0;
    if (fix.valid) {
        step.longitude = validStamp ? continued(*fix.longitude, eastward) : *fix.longitude;
        step.followsGap = validStamp && (fix.stamp < *validStamp || fix.stamp - *validStamp > gap);
        eastward = step.longitude;
        validStamp = fix.stamp;
    }
    return step;
}

void Outline::add(const Fix& fix) {
    const Follower::Step step = follower.step(fix);
    ++fixes;
    recorded += step.recorded;
    if (!fix.valid) {
        return;
    }
    fastest = std::max(fastest, fix.speed.value_or(0));
    if (!extent) {
        extent = {*fix.latitude, *fix.latitude, step.longitude, step.longitude};
    }
    extent->add(*fix.latitude, step.longitude);
}

}  // namespace vextrace::tools
