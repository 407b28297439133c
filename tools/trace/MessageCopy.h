#pragma once

#include <cstdint>
#include <string>

#include "tools/io/OutputFile.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

/// Copies the messages of the span byte for byte, and counts what is copied and what is not.
class MessageCopy : public TraceVisitor {
public:
    explicit MessageCopy(OutputFile& destination) : output(destination) {}

    void addMessage(const TraceItem& message, uint64_t number) override;
    void passOver(const TraceItem& /*message*/) override { ++outside; }
    void addDamage(const TraceItem& damage) override;

    /// Reads again what was copied out of damage, and takes back what is no message once the damage
    /// is gone, until nothing is: then the copy is sound. What went into a pipe or device stays.
    void settle();

    uint64_t copied() const { return messages; }

    /// "2 messages, 171 bytes kept; 1 damaged place, 6 bytes passed over"
    std::string summary() const;

private:
    void write(const TraceItem& message);
    void count(const TraceItem& message);
    uint64_t readAgain();

    OutputFile& output;
    uint64_t messages = 0;
    uint64_t bytes = 0;
    uint64_t outside = 0;
    uint64_t damagedPlaces = 0;
    uint64_t damagedBytes = 0;
    uint64_t bytesTakenBack = 0;
};

}  // namespace vextrace::tools
