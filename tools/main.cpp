/// \file
/// vextrace: records GPS receivers, shows, sums up, converts, checks and mends traces.
#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/version.h"
#include "tools/commands/commands.h"
#include "tools/commands/suggestion.h"
#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"
#include "tools/io/standardStreams.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace {

int fail(Status status, std::string_view reason) {
    tell(reason);
    return status;
}

// Help and version are data: whoever asked for them wants to know when they cannot be written.
int showHelp(const CLI::App& app, const CLI::ParseError& request) {
    std::ostringstream text;
    app.exit(request, text, text);
    OutputFile out("-", false, {});
    out.write(text.str());
    out.commit();
    return STATUS_OK;
}

// CLI11 takes "[a]" for a list, which "./[a]" is not.
std::vector<std::string> argumentsOf(int argc, char* argv[]) {
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    for (std::string& argument : arguments) {
        if (argument.starts_with('[') && argument.ends_with(']')) {
            argument.insert(0, "./");
        }
    }
    return arguments;
}

int refuse(const CLI::App& app, const CLI::ParseError& error,
           const std::vector<std::string>& arguments) {
    return fail(STATUS_USAGE, unknownName(app, arguments).value_or(escaped(error.what())));
}

int run(const std::vector<std::string>& arguments) {
    CLI::App app(
        "Records GPS receivers as traces, and looks at, converts, checks and mends them.\n"
        "Example: vextrace record -o drive.trace --baud 9600 /dev/ttyACM0",
        "vextrace");
    app.set_version_flag("--version", fmt::format("vextrace {}.{}.{}", VEXTRACE_VERSION_MAJOR,
                                                  VEXTRACE_VERSION_MINOR, VEXTRACE_VERSION_PATCH));
    app.require_subcommand(1);
    ExitStatus status = STATUS_OK;
    addRecord(app, status);
    addShow(app, status);
    addInfo(app, status);
    addExport(app, status);
    addCheck(app, status);
    addRepair(app, status);
    addReport(app, status);
    try {
        // It wants the last one first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        return error.get_exit_code() == 0 ? showHelp(app, error) : refuse(app, error, arguments);
    }
    return status;
}

}  // namespace

int main(int argc, char* argv[]) {
    holdStandardStreams();
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));  // a write says so, too
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));  // likewise
    GPSTraceMessage::registerMessage();
    try {
        return run(argumentsOf(argc, argv));
    } catch (const BrokenPipe&) {
        return STATUS_OK;
    } catch (const UsageError& error) {
        return fail(STATUS_USAGE, error.what());
    } catch (const std::exception& error) {
        return fail(STATUS_DATA, error.what());
    }
}
