#include "tools/trace/ProvenTrace.h"

#include <fmt/core.h>

#include "libvexstream/utc.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"

namespace vextrace::tools {

bool ProvenTrace::passOver(std::span<const uint8_t> message) {
    const bool isSame = reader.passOver(message);
    gps += isSame ? 1 : 0;
    return isSame;
}

TraceItem ProvenTrace::next() {
    while (true) {
        TraceItem item = reader.next();
        switch (item.kind) {
            case TraceItem::Kind::GPS:
                ++gps;
                return item;
            case TraceItem::Kind::OTHER:
                ++others;
                break;
            case TraceItem::Kind::DAMAGE:
                refuseDamage(item);
            case TraceItem::Kind::END:
                item.offset = reader.position();
                return item;
        }
    }
}

void ProvenTrace::differ(uint64_t offset, const std::string& what) const {
    throw DataError(fmt::format("{}: the message at byte {} {}", name, offset, what));
}

void ProvenTrace::differInStamp(const TraceItem& message, timeStamp_t expected) const {
    differ(message.offset, fmt::format("bears {}, but its sentences say {}",
                                       utcText(message.gps->getTimeStamp()), utcText(expected)));
}

void ProvenTrace::holdsTooMuch(uint64_t offset, std::string_view code) const {
    differ(offset,
           fmt::format("holds a {} that the log does not have in its epoch", escaped(code)));
}

void ProvenTrace::lacks(uint64_t offset, uint64_t byte, const std::string& log) const {
    differ(offset, fmt::format("lacks the sentence at byte {} of {}", byte, log));
}

void ProvenTrace::isBehindLog(uint64_t offset) const {
    differ(offset, "is behind the last sentence of the log");
}

void ProvenTrace::refuseDamage(const TraceItem& damage) const {
    if (damage.offset == 0 && damage.reachesEnd) {
        throw DataError(fmt::format("{}: no trace: {} without any message", name,
                                    counted(damage.length, "byte")));
    }
    throw DataError(fmt::format("{}: damaged at byte {}: {}", name, damage.offset, damage.reason));
}

}  // namespace vextrace::tools
