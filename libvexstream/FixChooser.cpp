#include "libvexstream/FixChooser.h"

#include <utility>

namespace vextrace {

FixChooser::Outcome FixChooser::choose(const GpsView& message) {
    const timeStamp_t stamp = message.getTimeStamp();
    const bool goesOn = std::exchange(lastStamp, stamp) == stamp;
    // What is outside has a say in the verdicts on what follows.
    chosen = fixes.read(message);
    if (stamp < choice.from || stamp > choice.until) {
        return Outcome::OUTSIDE;
    }
    if (!chosen) {
        return goesOn ? Outcome::MORE : Outcome::NO_FIX;
    }
    if (chosen->repeats) {
        return Outcome::REPEATED;
    }
    return chosen->isDoubtful() && !choice.unchecked ? Outcome::WRONG : Outcome::TAKEN;
}

void FixChooser::passOver(const GpsView& message) {
    fixes.read(message);
    lastStamp = message.getTimeStamp();
}

void FixChooser::endTrace() {
    fixes.endTrace();
    lastStamp.reset();
}

}  // namespace vextrace
