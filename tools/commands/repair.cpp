#include <fmt/core.h>

#include <string>
#include <string_view>

#include "tools/commands/commands.h"
#include "tools/io/FileStatus.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

namespace {

std::string_view textOf(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Copies the messages, and counts what is copied and what is not.
class Copy : public TraceVisitor {
public:
    explicit Copy(OutputFile& destination) : output(destination) {}

    void addMessage(const TraceItem& message, uint64_t /*number*/) override {
        output.write(textOf(message.bytes));
        bytes += message.length;
        ++messages;
    }

    void addDamage(const TraceItem& damage) override {
        ++damagedPlaces;
        damagedBytes += damage.length;
    }

    std::string summary() const {
        return fmt::format("{}, {} kept; {}, {} passed over", counted(messages, "message"),
                           counted(bytes, "byte"), counted(damagedPlaces, "damaged place"),
                           counted(damagedBytes, "byte"));
    }

private:
    OutputFile& output;
    uint64_t messages = 0;
    uint64_t bytes = 0;
    uint64_t damagedPlaces = 0;
    uint64_t damagedBytes = 0;
};

}  // namespace

int repair(const RepairCommand& options) {
    OutputFile output(options.output, options.force, inputStatuses({options.input}));
    Copy copy(output);
    Walk walk;
    walk.traces = {options.input};
    const Walked walked = walkTraces(walk, copy);
    if (walked.foundTrace) {
        output.commit();
        tell(fmt::format("{}: {}", shownName(options.input), copy.summary()));
    }
    return walked.status;
}

}  // namespace vextrace::tools
