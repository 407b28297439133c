#include "tools/report/Stretches.h"

#include <algorithm>
#include <utility>

namespace vextrace::tools {

std::optional<double> valueOf(const Fix& fix, Followed what) {
    const auto whereValid = [&](const std::optional<double>& value) {
        return fix.valid ? value : std::nullopt;
    };
    const auto number = [](const std::optional<unsigned>& value) {
        return value ? std::optional<double>(*value) : std::nullopt;
    };
    switch (what) {
        case Followed::FIX:
            return 0;
        case Followed::POSITION:
            return fix.valid ? std::optional<double>(0) : std::nullopt;
        case Followed::SPEED:
            return whereValid(fix.speed);
        case Followed::ALTITUDE:
            return whereValid(fix.altitude);
        case Followed::SATELLITES:
            return number(fix.satellites);
        case Followed::QUALITY:
            return number(fix.quality);
        case Followed::COUNT:
            break;
    }
    return std::nullopt;
}

Stretches::Stretches(timeStamp_t gapLength, size_t longest)
    : gap(gapLength), longestLine(longest) {}

void Stretches::add(const Moment& moment, std::span<const uint8_t> message, uint64_t stretch) {
    if (stretch != openStretch) {
        close();
        openStretch = stretch;
    }
    run += moment.fix.stamp < latestStamp ? 1 : 0;
    latestStamp = moment.fix.stamp;
    const auto candidate = std::make_shared<Candidate>(
        Candidate{moment, std::vector<uint8_t>(message.begin(), message.end())});
    candidate->moment.run = run;
    for (size_t i = 0; i < COURSES; ++i) {
        if (const auto value = valueOf(moment.fix, static_cast<Followed>(i))) {
            follow(i, candidate, *value);
        }
    }
}

void Stretches::follow(size_t course, const CandidatePtr& candidate, double value) {
    Course& values = open[course];
    const timeStamp_t stamp = candidate->moment.fix.stamp;
    const timeStamp_t before = std::exchange(latest[course], stamp).value_or(stamp);
    const timeStamp_t pause = stamp > before ? stamp - before : 0;
    candidate->moment.breaks |= pause > gap ? 1U << course : 0U;
    if (!values.first) {
        values.first = values.least = values.greatest = candidate;
        values.minimum = values.maximum = value;
    } else if (pause > std::max(gap, values.longestGap)) {
        values.beforeGap = values.last;
        values.afterGap = candidate;
        values.longestGap = pause;
    }
    if (value < values.minimum) {
        values.least = candidate;
        values.minimum = value;
    }
    if (value > values.maximum) {
        values.greatest = candidate;
        values.maximum = value;
    }
    values.last = candidate;
}

void Stretches::close() {
    std::vector<CandidatePtr> found;
    for (Course& course : open) {
        for (CandidatePtr* place : {&course.first, &course.last, &course.least, &course.greatest,
                                    &course.beforeGap, &course.afterGap}) {
            if (*place && std::find(found.begin(), found.end(), *place) == found.end()) {
                found.push_back(*place);
            }
        }
        course = {};
    }
    std::sort(found.begin(), found.end(), [](const CandidatePtr& a, const CandidatePtr& b) {
        return a->moment.number < b->moment.number;
    });
    for (const CandidatePtr& candidate : found) {
        candidate->moment.texts = textsOf(candidate->message, candidate->moment.fix, longestLine);
        kept.push_back(std::move(candidate->moment));
    }
}

// A gap may be filled by fixes that come later, and one is where those of another run end.
void Stretches::orderByTime() {
    std::stable_sort(kept.begin(), kept.end(),
                     [](const Moment& a, const Moment& b) { return a.fix.stamp < b.fix.stamp; });
    std::array<const Moment*, COURSES> before = {};
    for (Moment& moment : kept) {
        for (size_t i = 0; i < COURSES; ++i) {
            if (!valueOf(moment.fix, static_cast<Followed>(i))) {
                continue;
            }
            const Moment* const previous = std::exchange(before[i], &moment);
            const bool isFar = previous != nullptr && moment.fix.stamp - previous->fix.stamp > gap;
            const bool isBreak =
                isFar && ((moment.breaks >> i & 1) != 0 || previous->run != moment.run);
            moment.breaks = isBreak ? moment.breaks | 1U << i : moment.breaks & ~(1U << i);
        }
    }
}

std::vector<Moment> Stretches::finish() {
    close();
    orderByTime();
    return std::move(kept);
}

}  // namespace vextrace::tools
