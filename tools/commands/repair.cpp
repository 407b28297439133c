#include <fmt/format.h>

#include <memory>
#include <string>
#include <string_view>

#include "libvexstream/TraceReader.h"
#include "tools/commands/commands.h"
#include "tools/io/InputFile.h"
#include "tools/io/OutputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/DamageLog.h"

namespace vextrace::tools {

namespace {

struct Arguments {
    std::string input;
    std::string output;
    bool force = false;
};

std::string_view textOf(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// What was copied.
struct Kept {
    uint64_t messages = 0;
    uint64_t bytes = 0;
    bool isAll = true;  ///< of the sound messages
};

void copyMessages(TraceReader& trace, OutputFile& output, DamageLog& damage, Kept& kept,
                  Progress& progress) {
    for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END; item = trace.next()) {
        if (item.kind == TraceItem::Kind::DAMAGE) {
            damage.add(item);
        } else {
            output.write(textOf(item.bytes));
            kept.bytes += item.length;
            ++kept.messages;
        }
        progress.update(trace.position());
    }
}

// A disk that fails must not take what it gave before.
Kept copyMessages(InputFile& input, OutputFile& output, DamageLog& damage) {
    Kept kept;
    TraceReader trace(input);
    Progress progress(input.size());
    try {
        copyMessages(trace, output, damage, kept, progress);
    } catch (const ReadError& error) {
        tell(error.what());
        kept.isAll = false;
    }
    damage.finish();
    return kept;
}

ExitStatus run(const Arguments& arguments) {
    InputFile input(arguments.input);
    OutputFile output(arguments.output, arguments.force, {input.identity()});
    DamageLog damage(input.name());
    const Kept kept = copyMessages(input, output, damage);
    const bool isSound = damage.places() == 0 && kept.isAll;
    if (kept.messages == 0 && !isSound) {
        return STATUS_DATA;
    }
    output.commit();
    tell(fmt::format("{}: {}, {} kept; {}, {} passed over", input.name(),
                     counted(kept.messages, "message"), counted(kept.bytes, "byte"),
                     counted(damage.places(), "damaged place"), counted(damage.bytes(), "byte")));
    return isSound ? STATUS_OK : STATUS_DATA;
}

}  // namespace

void addRepair(CLI::App& app, ExitStatus& status) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(
        "repair",
        "Copies every message of a damaged trace that can be found, byte for byte, and names the\n"
        "bytes passed over. The status is 1 where there were any: OUT is whole, something is "
        "lost.\n"
        "Example: vextrace repair broken.trace mended.trace");
    command->add_option("IN", arguments->input, "the trace; - is standard input")->required();
    command->add_option("OUT", arguments->output, "the file to write; - is standard output")
        ->required();
    command->add_flag("--force", arguments->force, "replace OUT where it exists");
    command->callback([arguments, &status] { status = run(*arguments); });
}

}  // namespace vextrace::tools
