#include "tools/trace/MessageCopy.h"

#include <fmt/core.h>

#include <memory>

#include "tools/io/plural.h"

namespace vextrace::tools {

void MessageCopy::addMessage(const TraceItem& message, uint64_t /*number*/) {
    write(message);
    count(message);
}

void MessageCopy::write(const TraceItem& message) {
    output.write({reinterpret_cast<const char*>(message.bytes.data()), message.bytes.size()});
}

void MessageCopy::count(const TraceItem& message) {
    bytes += message.length;
    ++messages;
}

void MessageCopy::addDamage(const TraceItem& damage) {
    ++damagedPlaces;
    damagedBytes += damage.length;
}

void MessageCopy::settle() {
    if (damagedPlaces == 0 || !output.canTakeBack()) {
        return;
    }
    while (const uint64_t takenBack = readAgain()) {
        bytesTakenBack += takenBack;
    }
}

// Bytes that were taken back.
uint64_t MessageCopy::readAgain() {
    messages = 0;
    bytes = 0;
    uint64_t takenBack = 0;
    const std::unique_ptr<ByteSource> copy = output.written();
    TraceReader trace(*copy);
    for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END; item = trace.next()) {
        if (item.kind != TraceItem::Kind::DAMAGE) {
            count(item);
            if (takenBack != 0) {
                write(item);
            }
            continue;
        }
        if (takenBack == 0) {
            output.goBackTo(item.offset);
        }
        takenBack += item.length;
    }
    if (takenBack != 0) {
        output.endHere();
    }
    return takenBack;
}

std::string MessageCopy::summary() const {
    std::string text = fmt::format("{}, {} kept; {}, {} passed over", counted(messages, "message"),
                                   counted(bytes, "byte"), counted(damagedPlaces, "damaged place"),
                                   counted(damagedBytes, "byte"));
    if (bytesTakenBack != 0) {
        text += fmt::format("; {} more, which were messages only between damage",
                            counted(bytesTakenBack, "byte"));
    }
    if (outside != 0) {
        text += fmt::format("; {} from before or after the time asked for",
                            counted(outside, "message"));
    }
    return text;
}

}  // namespace vextrace::tools
