#include "tools/trace/Summary.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "libvexstream/sentence.h"
#include "libvexstream/utc.h"

namespace vextrace::tools {

namespace {

// Those of RMC and GGA are known with their fix.
Checksum checksumOf(std::string_view code, std::string_view sentence,
                    const std::optional<Fix>& fix) {
    if (fix && fix->rmcChecksum && code == GPSTraceMessage::GPRMC) {
        return *fix->rmcChecksum;
    }
    if (fix && fix->ggaChecksum && code == GPSTraceMessage::GPGGA) {
        return *fix->ggaChecksum;
    }
    return storedChecksum(sentence);
}

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

// Null where there is no room for another code.
SentenceCounts::Row* SentenceCounts::rowOf(std::string_view code) {
    if (expected >= counts.size() || counts[expected].code != code) {
        auto place = places.find(code);
        if (place == places.end()) {
            if (counts.size() == MOST_CODES) {
                return nullptr;
            }
            place = places.emplace(code, counts.size()).first;
            counts.emplace_back().code = code;
        }
        expected = place->second;
    }
    return &counts[expected++];
}

void SentenceCounts::add(std::string_view code, Checksum checksum,
                         std::optional<timeStamp_t> stamp) {
    Row* const row = rowOf(code);
    if (row == nullptr) {
        ++further;
        return;
    }
    ++row->number;
    row->wrongChecksums += checksum == Checksum::WRONG ? 1 : 0;
    if (stamp) {
        row->first = std::min(row->first.value_or(*stamp), *stamp);
        row->last = std::max(row->last.value_or(*stamp), *stamp);
    }
}

uint64_t SentenceCounts::total() const {
    return std::accumulate(counts.begin(), counts.end(), further,
                           [](uint64_t sum, const Row& row) { return sum + row.number; });
}

std::vector<SentenceCounts::Row> SentenceCounts::rows() const {
    std::vector<Row> sorted = counts;
    std::sort(sorted.begin(), sorted.end(),
              [](const Row& a, const Row& b) { return a.code < b.code; });
    return sorted;
}

void SatelliteCounts::add(unsigned satellites) {
    if (satellites <= MOST) {
        ++fixes[satellites];
        ++total;
    }
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

void Summary::add(const TraceItem& item, const std::optional<Fix>& fix) {
    bytes += item.length;
    switch (item.kind) {
        case TraceItem::Kind::GPS:
            addGps(*item.gps, fix);
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

void Summary::addGps(const GpsView& gps, const std::optional<Fix>& fix) {
    ++gpsMessages;
    addSentences(gps, fix);
    addTime(gps.getTimeStamp());
    if (fix) {
        addFix(*fix);
    }
}

void Summary::addSentences(const GpsView& gps, const std::optional<Fix>& fix) {
    const timeStamp_t stamp = gps.getTimeStamp();
    const auto dateStamp = hasDate(stamp) ? std::optional(stamp) : std::nullopt;
    for (const std::string_view sentence : gps.getSentences()) {
        const std::string_view code = GpsView::codeOf(sentence);
        const Checksum checksum = checksumOf(code, sentence, fix);
        sentences.add(withoutLineEnd(code), checksum, dateStamp);
        wrongChecksums += checksum == Checksum::WRONG ? 1 : 0;
        noChecksums += checksum == Checksum::NONE ? 1 : 0;
    }
}

void Summary::addTime(timeStamp_t stamp) {
    if (hasDate(stamp)) {
        dated.add(stamp, allowedGap);
    } else {
        ++messagesWithoutDate;
        undated.add(stamp, allowedGap);
    }
}

void Summary::addFix(const Fix& fix) {
    if (fix.repeats) {
        ++repeatedFixes;
        return;
    }
    if (fix.isDoubtful()) {
        ++doubtfulFixes;
        return;
    }
    if (!fix.valid) {
        ++invalidFixes;
        return;
    }
    ++validFixes;
    path.add(*fix.latitude, *fix.longitude, isBehindGap(fix.stamp));
    lastFix = fix.stamp;
    positions.add(*fix.latitude, *fix.longitude);
    if (fix.satellites) {
        satellites.add(*fix.satellites);
    }
    motion.add(fix.stamp, fix.speed, allowedGap);
    if (fix.speed) {
        speed.add(*fix.speed);
    }
    if (fix.altitude) {
        altitude.add(*fix.altitude);
    }
}

// In either direction.
bool Summary::isBehindGap(timeStamp_t stamp) const {
    return lastFix && std::max(stamp, *lastFix) - std::min(stamp, *lastFix) > allowedGap;
}

void Summary::endTrace() {
    lastFix.reset();
    dated.endTrace();
    undated.endTrace();
    path.end();
    motion.endTrace();
}

}  // namespace vextrace::tools
