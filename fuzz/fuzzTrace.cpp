#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/finding.h"
#include "libvexstream/ByteSource.h"
#include "libvexstream/TraceReader.h"
#include "libvextrace/serialise.h"

using vextrace::TraceItem;

namespace {

struct Item {
    TraceItem::Kind kind;
    uint64_t begin;
    uint64_t end;
};

// What the reader makes of a trace.
struct Walk {
    std::vector<Item> items;
    std::string sound;  // the messages, which is what repair writes
    uint64_t damaged = 0;
};

// Whether all that the view says is what the message says.
bool isViewOf(const vextrace::GpsView& view, const GPSTraceMessage& message) {
    return std::ranges::equal(view.getSentences(), message.getSentences(),
                              [&](std::string_view viewed, const auto& held) {
                                  return viewed == held.second &&
                                         view.getSentence(held.first) == viewed;
                              }) &&
           view.getTimeStamp() == message.getTimeStamp() &&
           view.getHeaderReserved() == message.getHeaderReserved() && view.message() == message;
}

void checkMessage(const TraceItem& item, const std::string& trace) {
    const std::string message(item.bytes.begin(), item.bytes.end());
    if (message != trace.substr(item.offset, item.length)) {
        stopAt("a message is not what the trace holds there");
    }
    if ((item.kind == TraceItem::Kind::GPS) != (item.gps != nullptr)) {
        stopAt("a GPS message is not decoded, or another is");
    }
    if (item.gps != nullptr) {
        const DecodedMessage decoded = MessageFactory::decode(item.bytes.data(), item.bytes.size());
        const auto* const gps = dynamic_cast<const GPSTraceMessage*>(decoded.message.get());
        if (gps == nullptr || !isViewOf(*item.gps, *gps)) {
            stopAt("a GPS message is another than its bytes say");
        }
    }
}

// Reads on to the end. What is given out must lie back to back.
void readOn(vextrace::TraceReader& reader, const std::string& trace, Walk& walk) {
    for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END; item = reader.next()) {
        if (item.offset != (walk.items.empty() ? 0 : walk.items.back().end) || item.length == 0) {
            stopAt("the items do not lie back to back");
        }
        walk.items.push_back({item.kind, item.offset, item.offset + item.length});
        if (item.kind == TraceItem::Kind::DAMAGE) {
            walk.damaged += item.length;
        } else {
            checkMessage(item, trace);
            walk.sound.append(item.bytes.begin(), item.bytes.end());
        }
    }
}

// As a trace that grows first, where told, and then as it is.
Walk walkOf(const std::string& trace, bool grows = false) {
    vextrace::MemorySource source({reinterpret_cast<const uint8_t*>(trace.data()), trace.size()});
    vextrace::TraceReader reader(source);
    Walk walk;
    if (grows) {
        reader.setGrowing(true);
        readOn(reader, trace, walk);
        reader.setGrowing(false);
    }
    readOn(reader, trace, walk);
    if (walk.sound.size() + walk.damaged != trace.size()) {
        stopAt("the items are not all of the trace");
    }
    return walk;
}

std::string soundMessage(timeStamp_t stamp) {
    GPSTraceMessage fix(
        stamp, "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*07\r\n");
    fix.addRecord("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n");
    const std::vector<uint8_t> bytes = vextrace::serialise(fix);
    return {bytes.begin(), bytes.end()};
}

// A GPS message is never taken for damage. What is in front of it may be a message of another type
// that reaches over it, since the payloads of those cannot be checked.
void checkFound(const Walk& walk, uint64_t begin, uint64_t end) {
    for (const Item& item : walk.items) {
        if (item.kind == TraceItem::Kind::DAMAGE && item.begin < end && item.end > begin) {
            const bool isCut =
                std::any_of(walk.items.begin(), walk.items.end(), [&](const Item& other) {
                    return other.kind == TraceItem::Kind::OTHER && other.begin < end &&
                           other.end > begin;
                });
            if (!isCut) {
                stopAt("a sound message is lost");
            }
        }
    }
}

// What repair writes holds every GPS message still, and is sound where they are all there is.
// Whether a message of another type is one is told by what lies behind it, which was damage before.
void checkRepaired(const Walk& walk) {
    const Walk again = walkOf(walk.sound);
    bool isGpsAlone = true;
    uint64_t position = 0;
    for (const Item& item : walk.items) {
        if (item.kind == TraceItem::Kind::DAMAGE) {
            continue;
        }
        const uint64_t end = position + item.end - item.begin;
        if (item.kind == TraceItem::Kind::GPS) {
            checkFound(again, position, end);
        } else {
            isGpsAlone = false;
        }
        position = end;
    }
    if (isGpsAlone && again.damaged != 0) {
        stopAt("what was repaired is not sound");
    }
}

// Three sound messages between any bytes.
void checkBetween(const std::string& front, const std::string& back) {
    const std::string message = soundMessage(0x189ABCDE00000000);
    const Walk walk = walkOf(front + message + message + message + back);
    for (size_t i = 0; i < 3; ++i) {
        checkFound(walk, front.size() + i * message.size(),
                   front.size() + (i + 1) * message.size());
    }
}

}  // namespace

/// Any bytes as a trace: alone, and around a sound trace, which must be found.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    GPSTraceMessage::registerMessage();
    const std::string bytes(data, data + size);
    const Walk alone = walkOf(bytes);
    if (alone.damaged == 0 && alone.sound != bytes) {
        stopAt("a sound trace does not come out the same");
    }
    checkRepaired(alone);
    walkOf(bytes, true);
    const size_t middle = bytes.empty() ? 0 : static_cast<uint8_t>(bytes[0]) * size / 255;
    checkBetween(bytes.substr(0, middle), bytes.substr(middle));
    return 0;
}
