#include "tools/trace/DamageLog.h"

#include <fmt/core.h>

#include <utility>

#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/kinds.h"

namespace vextrace::tools {

namespace {

constexpr uint64_t TOLD_PLACES = 10;

}  // namespace

DamageLog::DamageLog(std::string shownName) : name(std::move(shownName)) {}

void DamageLog::add(const TraceItem& damage) {
    ++count;
    passedOver += damage.length;
    const std::string length = counted(damage.length, "byte");
    if (damage.offset == 0 && damage.reachesEnd) {
        tell(fmt::format(
            "{}: no trace: {} without any message{}", name, length,
            looksLikeLog(damage.bytes) ? "; it looks like NMEA: vextrace record first" : ""));
    } else if (count <= TOLD_PLACES) {
        tell(fmt::format("{}: damaged at byte {}, {} passed over: {}", name, damage.offset, length,
                         damage.reason));
    } else {
        heldBack += damage.length;
    }
}

void DamageLog::finish() {
    if (count > TOLD_PLACES) {
        tell(fmt::format("{}: {}, {} passed over", name,
                         counted(count - TOLD_PLACES, "more damaged place"),
                         counted(heldBack, "byte")));
    }
}

}  // namespace vextrace::tools
