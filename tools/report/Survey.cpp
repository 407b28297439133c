#include "tools/report/Survey.h"

#include <algorithm>

#include "libvexstream/utc.h"

namespace vextrace::tools {

bool isDrawn(const Fix& fix) {
    return !fix.isDoubtful() && !fix.repeats;
}

void Survey::beginTrace(const std::string& name) {
    all.emplace_back().name = name;
    metresBefore = numbers.path.metres();
    foundDate = false;
    if (drawn.size() < MOST_DRAWN) {
        drawn.emplace_back(numbers.gapLimit());
    }
}

void Survey::add(const TraceItem& item) {
    if (item.kind != TraceItem::Kind::GPS) {
        numbers.add(item, std::nullopt);
        return;
    }
    const std::optional<Fix> fix = fixes.read(*item.gps);
    numbers.add(item, fix);
    addTime(item.gps->getTimeStamp());
    if (fix && isDrawn(*fix) && all.size() <= MOST_DRAWN) {
        drawn.back().add(*fix);
    }
}

void Survey::addTime(timeStamp_t stamp) {
    SurveyedTrace& trace = all.back();
    const bool isDated = hasDate(stamp);
    if (isDated && !foundDate) {
        trace.first = trace.last = stamp;
        foundDate = true;
    } else if (isDated || !foundDate) {
        trace.first = std::min(trace.first.value_or(stamp), stamp);
        trace.last = std::max(trace.last.value_or(stamp), stamp);
    }
}

void Survey::endTrace(uint64_t bytes) {
    all.back().bytes = bytes;
    all.back().metres = numbers.path.metres() - metresBefore;
    numbers.endTrace();
    fixes.endTrace();
}

}  // namespace vextrace::tools
