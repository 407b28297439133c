#include "tools/report/Series.h"

#include <algorithm>
#include <bit>

namespace vextrace::tools {

namespace {

constexpr unsigned LARGEST_SHIFT = 63;

timeStamp_t stampOf(const MomentPtr& moment) {
    return moment->fix.stamp;
}

timeStamp_t between(const MomentPtr& before, const MomentPtr& after) {
    return stampOf(after) - stampOf(before);
}

}  // namespace

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

// The longest gap is kept. One that a moment out of order falls into is divided by it.
void Series::Course::offerGap(const MomentPtr& before, const MomentPtr& after, timeStamp_t gap) {
    const bool isGap = stampOf(before) < stampOf(after) && between(before, after) > gap;
    if (isGap && (!beforeGap || between(before, after) > between(beforeGap, afterGap))) {
        beforeGap = before;
        afterGap = after;
    }
}

void Series::Course::add(const MomentPtr& moment, double value, timeStamp_t gap) {
    if (!first) {
        first = last = least = greatest = moment;
        minimum = maximum = value;
        return;
    }
    if (value < minimum) {
        least = moment;
        minimum = value;
    }
    if (value > maximum) {
        greatest = moment;
        maximum = value;
    }
    if (stampOf(moment) >= stampOf(last)) {
        offerGap(last, moment, gap);
        last = moment;
        return;
    }
    if (stampOf(moment) < stampOf(first)) {
        offerGap(moment, first, gap);
        first = moment;
    } else if (beforeGap && stampOf(beforeGap) < stampOf(moment) &&
               stampOf(moment) < stampOf(afterGap)) {
        const MomentPtr before = beforeGap;
        const MomentPtr after = afterGap;
        beforeGap = afterGap = nullptr;
        offerGap(before, moment, gap);
        offerGap(moment, after, gap);
    }
}

void Series::Course::append(const Course& later, timeStamp_t gap) {
    if (!later.first) {
        return;
    }
    if (!first) {
        *this = later;
        return;
    }
    if (later.minimum < minimum) {
        least = later.least;
        minimum = later.minimum;
    }
    if (later.maximum > maximum) {
        greatest = later.greatest;
        maximum = later.maximum;
    }
    offerGap(last, later.first, gap);
    if (later.beforeGap) {
        offerGap(later.beforeGap, later.afterGap, gap);
    }
    last = later.last;
}

// Each once, in order of time.
std::vector<MomentPtr> Series::Stretch::moments() const {
    std::vector<MomentPtr> found;
    for (const Course& course : courses) {
        for (const MomentPtr* moment : {&course.first, &course.last, &course.least,
                                        &course.greatest, &course.beforeGap, &course.afterGap}) {
            if (*moment && std::find(found.begin(), found.end(), *moment) == found.end()) {
                found.push_back(*moment);
            }
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const MomentPtr& a, const MomentPtr& b) {
        return stampOf(a) < stampOf(b);
    });
    return found;
}

void Series::Stretch::measure() {
    bytes = sizeof(Stretches::value_type);
    for (const MomentPtr& moment : moments()) {
        bytes += moment->footprint();
    }
}

Series::Series(timeStamp_t gapLength) : Series(gapLength, Limits()) {}

Series::Series(timeStamp_t gapLength, const Limits& ownLimits)
    : gap(gapLength), limits(ownLimits) {}

void Series::add(const MomentPtr& moment) {
    ++added;
    if (open == nullptr || stampOf(moment) >> shift != openKey) {
        close();
        while (shift < LARGEST_SHIFT &&
               (stretches.size() >= limits.stretches || held > limits.bytes)) {
            mergeStretches();
        }
        openKey = stampOf(moment) >> shift;
        open = &stretches[openKey];
        held -= open->bytes;
        open->bytes = 0;
    }
    for (size_t i = 0; i < open->courses.size(); ++i) {
        if (const auto value = valueOf(moment->fix, static_cast<Followed>(i))) {
            open->courses[i].add(moment, *value, gap);
        }
    }
}

void Series::close() {
    if (open == nullptr) {
        return;
    }
    for (const MomentPtr& moment : open->moments()) {
        moment->settle();
    }
    open->measure();
    held += open->bytes;
    open = nullptr;
}

// How often the stretches must be doubled until two of them become one.
unsigned Series::doublingsToMerge() const {
    unsigned least = LARGEST_SHIFT - shift;
    for (auto next = stretches.begin(); next != stretches.end();) {
        const timeStamp_t key = next->first;
        if (++next != stretches.end()) {
            least = std::min(least, static_cast<unsigned>(std::bit_width(key ^ next->first)));
        }
    }
    return least;
}

void Series::mergeStretches() {
    const unsigned doublings = doublingsToMerge();
    shift += doublings;
    Stretches old;
    old.swap(stretches);
    held = 0;
    while (!old.empty()) {
        auto node = old.extract(old.begin());
        Stretch& stretch = node.mapped();
        node.key() >>= doublings;
        if (!old.empty() && old.begin()->first >> doublings == node.key()) {
            for (size_t i = 0; i < stretch.courses.size(); ++i) {
                stretch.courses[i].append(old.begin()->second.courses[i], gap);
            }
            old.erase(old.begin());
            stretch.measure();
        }
        held += stretch.bytes;
        stretches.insert(stretches.end(), std::move(node));
    }
}

size_t Series::count() const {
    size_t moments = 0;
    for (const auto& [key, stretch] : stretches) {
        moments += stretch.moments().size();
    }
    return moments;
}

bool Series::coarsen() {
    close();
    const size_t before = count();
    while (shift < LARGEST_SHIFT && count() == before) {
        mergeStretches();
    }
    return count() < before;
}

std::vector<Series::Drawn> Series::drawn() {
    close();
    std::vector<Drawn> result;
    std::array<const Moment*, static_cast<size_t>(Followed::COUNT)> latest = {};
    for (const auto& [key, stretch] : stretches) {
        for (const MomentPtr& moment : stretch.moments()) {
            result.push_back({moment.get(), 0});
            for (size_t i = 0; i < latest.size(); ++i) {
                const Course& course = stretch.courses[i];
                if (!valueOf(moment->fix, static_cast<Followed>(i))) {
                    continue;
                }
                const bool followsGap =
                    moment == course.afterGap || (moment == course.first && latest[i] != nullptr &&
                                                  stampOf(moment) - latest[i]->fix.stamp > gap);
                result.back().breaks |= followsGap ? 1U << i : 0U;
                latest[i] = moment.get();
            }
        }
    }
    return result;
}

}  // namespace vextrace::tools
