/// \file
/// Runs commands of the program in the test's own process, which is quick enough for many
/// thousands.
#pragma once

#include <string>
#include <vector>

#include "tests/stream/traces.h"
#include "tools/commands/commands.h"

/// What a command left behind.
struct CommandResult {
    int status;
    std::string output;  ///< on standard output
    std::string told;    ///< on standard error
};

/// A command line of the program, to be run again and again.
class Command {
public:
    using Add = void (*)(CLI::App& app, vextrace::tools::ExitStatus& status);

    /// \param arguments  with the command's name in front
    Command(Add add, std::vector<std::string> arguments);

    CommandResult run();

private:
    int runForStatus();

    CLI::App app;
    vextrace::tools::ExitStatus status = vextrace::tools::STATUS_OK;
    std::vector<std::string> line;
    TemporaryFile output;
    TemporaryFile told;
};
