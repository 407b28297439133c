#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "libvexstream/TraceReader.h"
#include "tools/io/InputFile.h"

namespace vextrace::tools {

/// The GPS messages of a trace that is compared with its log.
class ProvenTrace {
public:
    explicit ProvenTrace(InputFile& trace) : name(trace.name()), reader(trace) {}

    /// Passes over a GPS message where its bytes are the next ones of the trace, without reading
    /// what they say.
    bool passOver(std::span<const uint8_t> message);

    /// The next GPS message; END, with its offset, at the end of the trace.
    /// \throws DataError at damage
    TraceItem next();

    uint64_t messages() const { return gps; }
    uint64_t otherMessages() const { return others; }  ///< passed over

    /// \throws DataError about the message at this byte of the trace
    [[noreturn]] void differ(uint64_t offset, const std::string& what) const;

    /// The same of a message that bears another stamp than its sentences say.
    [[noreturn]] void differInStamp(const TraceItem& message, timeStamp_t expected) const;

    /// The same of a message that holds a sentence of this code too much.
    [[noreturn]] void holdsTooMuch(uint64_t offset, std::string_view code) const;

    /// The same of a message that lacks the sentence at byte \p byte of the log.
    [[noreturn]] void lacks(uint64_t offset, uint64_t byte, const std::string& log) const;

    /// The same of a message that no sentence of the log is left for.
    [[noreturn]] void isBehindLog(uint64_t offset) const;

private:
    [[noreturn]] void refuseDamage(const TraceItem& damage) const;

    std::string name;
    TraceReader reader;
    uint64_t gps = 0;
    uint64_t others = 0;
};

}  // namespace vextrace::tools
