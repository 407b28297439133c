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

// Most are kept of no course when the second one behind comes, so that their memory serves again.
void Stretches::add(Moment moment, std::span<const uint8_t> message, uint64_t stretch) {
    std::swap(latestTwo[0], latestTwo[1]);
    CandidatePtr& candidate = latestTwo[0];
    if (candidate.use_count() != 1) {
        candidate = std::make_shared<Candidate>();
    }
    candidate->moment = std::move(moment);
    candidate->moment.stretch = stretch;
    candidate->message.assign(message.begin(), message.end());
    const Values values = valuesOf(candidate->moment.fix);
    noteGaps(candidate->moment, values);
    add(candidate, values);
}

Stretches::Values Stretches::valuesOf(const Fix& fix) {
    Values values;
    for (size_t i = 0; i < COURSES; ++i) {
        values[i] = valueOf(fix, static_cast<Followed>(i));
    }
    return values;
}

void Stretches::noteGaps(Moment& moment, const Values& values) {
    const timeStamp_t stamp = moment.fix.stamp;
    run += stamp < latestStamp ? 1 : 0;
    latestStamp = stamp;
    moment.run = run;
    for (size_t i = 0; i < COURSES; ++i) {
        if (values[i]) {
            const timeStamp_t before = std::exchange(latest[i], stamp).value_or(stamp);
            moment.breaks |= stamp > before && stamp - before > gap ? 1U << i : 0U;
        }
    }
}

void Stretches::add(const CandidatePtr& candidate, const Values& values) {
    const Moment& moment = candidate->moment;
    if (moment.stretch != openStretch) {
        close();
        openStretch = moment.stretch;
    }
    for (size_t i = 0; i < COURSES; ++i) {
        if (values[i]) {
            follow(open[i], candidate, *values[i], (moment.breaks >> i & 1) != 0);
        }
    }
}

void Stretches::follow(Course& values, const CandidatePtr& candidate, double value,
                       bool isBehindGap) {
    if (!values.first) {
        values.first = values.least = values.greatest = candidate;
        values.minimum = values.maximum = value;
    } else if (isBehindGap) {
        const timeStamp_t stamp = candidate->moment.fix.stamp;
        const timeStamp_t before = values.last->moment.fix.stamp;
        if (stamp > before && stamp - before > values.longestGap) {
            values.beforeGap = values.last;
            values.afterGap = candidate;
            values.longestGap = stamp - before;
        }
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
        if (!candidate->message.empty()) {
            candidate->moment.texts = textsOf(candidate->message, candidate->moment.fix);
        }
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

std::vector<Moment> Stretches::thinned(std::vector<Moment> moments, double part, timeStamp_t gap) {
    std::sort(moments.begin(), moments.end(),
              [](const Moment& a, const Moment& b) { return a.number < b.number; });
    Stretches fewer(gap);
    for (Moment& moment : moments) {
        moment.stretch = static_cast<uint64_t>(static_cast<double>(moment.stretch) * part);
        const Values values = valuesOf(moment.fix);
        fewer.add(std::make_shared<Candidate>(Candidate{std::move(moment), {}}), values);
    }
    return fewer.finish();
}

}  // namespace vextrace::tools
