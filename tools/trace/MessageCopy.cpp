#include "tools/trace/MessageCopy.h"

#include <fmt/core.h>

#include "tools/io/plural.h"

namespace vextrace::tools {

void MessageCopy::addMessage(const TraceItem& message, uint64_t /*number*/) {
    output.write({reinterpret_cast<const char*>(message.bytes.data()), message.bytes.size()});
    bytes += message.length;
    ++messages;
}

void MessageCopy::addDamage(const TraceItem& damage) {
    ++damagedPlaces;
    damagedBytes += damage.length;
}

std::string MessageCopy::summary() const {
    std::string text = fmt::format("{}, {} kept; {}, {} passed over", counted(messages, "message"),
                                   counted(bytes, "byte"), counted(damagedPlaces, "damaged place"),
                                   counted(damagedBytes, "byte"));
    if (outside != 0) {
        text += fmt::format("; {} from before or after the time asked for",
                            counted(outside, "message"));
    }
    return text;
}

}  // namespace vextrace::tools
