#include "tools/trace/Summary.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "tools/nmea/sentence.h"

namespace vextools {

namespace {

// A recorder that knows no date counts from 1970-01-01.
constexpr timeStamp_t FIRST_DATED = timeStamp_t{365} * 86'400 * 1'000'000'000;

}  // namespace

void TimeSpan::add(timeStamp_t stamp, timeStamp_t allowedGap) {
    first = std::min(first.value_or(stamp), stamp);
    last = std::max(last.value_or(stamp), stamp);
    if (previous && stamp < *previous) {
        ++stepsBack;
    } else if (previous && stamp - *previous > allowedGap) {
        ++gapCount;
        addGap({*previous, stamp});
    }
    previous = stamp;
}

void TimeSpan::addGap(const Gap& gap) {
    if (!longestGap || gap.length() > longestGap->length()) {
        longestGap = gap;
    }
    if (gaps.size() < LISTED_GAPS) {
        gaps.push_back(gap);
    }
}

void TimeSpan::merge(const TimeSpan& other) {
    if (!other.first) {
        return;
    }
    first = std::min(first.value_or(*other.first), *other.first);
    last = std::max(last.value_or(*other.last), *other.last);
    stepsBack += other.stepsBack;
    gapCount += other.gapCount;
    if (other.longestGap && (!longestGap || other.longestGap->length() > longestGap->length())) {
        longestGap = other.longestGap;
    }
    const size_t room = std::min(LISTED_GAPS - gaps.size(), other.gaps.size());
    gaps.insert(gaps.end(), other.gaps.begin(),
                other.gaps.begin() + static_cast<std::ptrdiff_t>(room));
}

void SentenceCounts::add(std::string_view code, uint64_t number) {
    if (expected >= counts.size() || counts[expected].code != code) {
        const auto place = std::find_if(counts.begin(), counts.end(),
                                        [code](const Count& count) { return count.code == code; });
        expected = static_cast<size_t>(place - counts.begin());
        if (place == counts.end()) {
            if (counts.size() == MOST_CODES) {
                further += number;
                return;
            }
            counts.push_back({std::string(code), 0});
        }
    }
    counts[expected].number += number;
    ++expected;
}

void SentenceCounts::merge(const SentenceCounts& other) {
    for (const Count& count : other.counts) {
        add(count.code, count.number);
    }
    further += other.further;
}

uint64_t SentenceCounts::total() const {
    return std::accumulate(counts.begin(), counts.end(), further,
                           [](uint64_t sum, const Count& count) { return sum + count.number; });
}

std::map<std::string, uint64_t> SentenceCounts::byCode() const {
    std::map<std::string, uint64_t> sorted;
    for (const Count& count : counts) {
        sorted.emplace(count.code, count.number);
    }
    return sorted;
}

void SatelliteCounts::add(unsigned satellites) {
    if (satellites <= MOST) {
        ++fixes[satellites];
        ++total;
    }
}

void SatelliteCounts::merge(const SatelliteCounts& other) {
    std::transform(fixes.begin(), fixes.end(), other.fixes.begin(), fixes.begin(),
                   std::plus<uint64_t>());
    total += other.total;
}

std::optional<unsigned> SatelliteCounts::least() const {
    return total == 0 ? std::nullopt : std::optional(atRank(0));
}

std::optional<double> SatelliteCounts::median() const {
    return total == 0 ? std::nullopt
                      : std::optional((atRank((total - 1) / 2) + atRank(total / 2)) / 2.0);
}

std::optional<unsigned> SatelliteCounts::most() const {
    return total == 0 ? std::nullopt : std::optional(atRank(total - 1));
}

// The count of the fix at this place, were they sorted by their counts.
unsigned SatelliteCounts::atRank(uint64_t rank) const {
    unsigned satellites = 0;
    while (rank >= fixes[satellites]) {
        rank -= fixes[satellites++];
    }
    return satellites;
}

void ValueRange::add(double value) {
    least = std::min(least.value_or(value), value);
    greatest = std::max(greatest.value_or(value), value);
}

void ValueRange::merge(const ValueRange& other) {
    if (other.least) {
        add(*other.least);
        add(*other.greatest);
    }
}

void Summary::add(const TraceItem& item) {
    bytes += item.length;
    switch (item.kind) {
        case TraceItem::Kind::GPS:
            addGps(*item.gps);
            break;
        case TraceItem::Kind::OTHER:
            ++otherMessages;
            ++otherById[item.id];
            break;
        case TraceItem::Kind::DAMAGE:
            ++damagedPlaces;
            damagedBytes += item.length;
            break;
        case TraceItem::Kind::END:
            break;
    }
}

void Summary::addGps(const GPSTraceMessage& gps) {
    ++gpsMessages;
    addSentences(gps);
    addTime(gps.getTimeStamp());
    if (const std::optional<Fix> fix = fixOf(gps)) {
        addFix(*fix);
    }
}

void Summary::addSentences(const GPSTraceMessage& gps) {
    for (const auto& [code, sentence] : gps.getSentences()) {
        sentences.add(withoutLineEnd(code));
        switch (storedChecksum(sentence)) {
            case Checksum::WRONG:
                ++wrongChecksums;
                break;
            case Checksum::NONE:
                ++noChecksums;
                break;
            case Checksum::RIGHT:
                break;
        }
    }
}

void Summary::addTime(timeStamp_t stamp) {
    if (stamp >= FIRST_DATED) {
        dated.add(stamp, allowedGap);
    } else {
        ++messagesWithoutDate;
        undated.add(stamp, allowedGap);
    }
}

void Summary::addFix(const Fix& fix) {
    if (fix.isDoubtful()) {
        ++doubtfulFixes;
        return;
    }
    if (!fix.valid) {
        ++invalidFixes;
        return;
    }
    ++validFixes;
    path.add(*fix.latitude, *fix.longitude);
    positions.add(*fix.latitude, *fix.longitude);
    if (fix.satellites) {
        satellites.add(*fix.satellites);
    }
    if (fix.speed) {
        speed.add(*fix.speed);
    }
    if (fix.altitude) {
        altitude.add(*fix.altitude);
    }
}

void Summary::endTrace() {
    dated.endTrace();
    undated.endTrace();
    path.end();
}

void Summary::merge(const Summary& other) {
    bytes += other.bytes;
    gpsMessages += other.gpsMessages;
    otherMessages += other.otherMessages;
    for (const auto& [id, number] : other.otherById) {
        otherById[id] += number;
    }
    messagesWithoutDate += other.messagesWithoutDate;
    damagedPlaces += other.damagedPlaces;
    damagedBytes += other.damagedBytes;
    sentences.merge(other.sentences);
    wrongChecksums += other.wrongChecksums;
    noChecksums += other.noChecksums;
    validFixes += other.validFixes;
    invalidFixes += other.invalidFixes;
    doubtfulFixes += other.doubtfulFixes;
    satellites.merge(other.satellites);
    path.addMetres(other.path.metres());
    speed.merge(other.speed);
    altitude.merge(other.altitude);
    positions.merge(other.positions);
    dated.merge(other.dated);
    undated.merge(other.undated);
}

}  // namespace vextools
