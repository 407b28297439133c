#include "tools/report/Drive.h"

#include <algorithm>
#include <utility>

#include "libvexstream/utc.h"
#include "tools/report/shownTexts.h"

namespace vextrace::tools {

namespace {

std::string placeText(const Moment& moment) {
    const std::string& position = moment.texts.position;
    const timeStamp_t stamp = moment.fix.stamp;
    return hasDate(stamp) ? position + " at " + shownUtc(stamp) : position;
}

}  // namespace

Division::Division(const std::vector<Outline>& drives, uint64_t most) {
    uint64_t allFixes = 0;
    timeStamp_t recorded = 0;
    for (const Outline& drive : drives) {
        allFixes += drive.fixes;
        recorded += drive.recorded;
    }
    if (allFixes > most) {
        constexpr double KEPT = 5;
        const double half = static_cast<double>(most) / KEPT / 2;
        ofFix = half / static_cast<double>(allFixes);
        ofNanosecond = half / static_cast<double>(std::max<timeStamp_t>(recorded, 1));
    }
}

uint64_t Division::next(timeStamp_t recorded) {
    ++fixes;
    position += ofFix + ofNanosecond * static_cast<double>(recorded);
    return ofFix == 0 ? fixes : static_cast<uint64_t>(position);
}

Drive::Drive(const Outline& outline, Division& ofAll, timeStamp_t gap, size_t mostPoints)
    : division(ofAll), follower(gap), stretches(gap), drawn{Track(outline.fastest, mostPoints),
                                                            {},
                                                            {},
                                                            {},
                                                            {},
                                                            {}} {
    if (outline.extent) {
        drawn.frame.emplace(*outline.extent);
    }
}

void Drive::add(const Fix& fix, std::span<const uint8_t> message, uint64_t number) {
    const Follower::Step step = follower.step(fix);
    Moment moment;
    moment.fix = fix;
    moment.number = number;
    if (fix.valid && drawn.frame) {
        follow(step, moment);
    }
    moment.way = path.metres();
    stretches.add(std::move(moment), message, division.next(step.recorded));
}

void Drive::follow(const Follower::Step& step, Moment& moment) {
    const Fix& fix = moment.fix;
    // Across gaps, too: runs of one road stay beside each other behind a tunnel.
    path.add(*fix.latitude, *fix.longitude);
    TrackPoint point = drawn.frame->place(*fix.latitude, step.longitude);
    moment.x = point.x;
    moment.y = point.y;
    point.speed = fix.speed;
    point.followsGap = step.followsGap;
    drawn.track.add(point);
}

DrawnDrive Drive::finish() {
    drawn.moments = stretches.finish();
    addEnds();
    return std::move(drawn);
}

// The first valid fix and the last one are kept, for they are those of their stretches. A drive
// that has none, other than its outline, has no place on the map.
void Drive::addEnds() {
    const Moment* first = nullptr;
    const Moment* last = nullptr;
    for (const Moment& moment : drawn.moments) {
        if (moment.fix.valid) {
            first = first == nullptr || moment.number < first->number ? &moment : first;
            last = last == nullptr || moment.number > last->number ? &moment : last;
        }
    }
    if (first == nullptr) {
        drawn.frame.reset();
        return;
    }
    drawn.start = placeText(*first);
    drawn.end = placeText(*last);
    drawn.first = first->fix;
}

}  // namespace vextrace::tools
