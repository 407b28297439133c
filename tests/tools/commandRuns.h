/// \file
/// Runs commands of the program in the test's own process, which is quick enough for many
/// thousands.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "tests/stream/traces.h"

/// What a command left behind.
struct CommandResult {
    int status;
    std::string output;  ///< on standard output
    std::string told;    ///< on standard error
};

/// A command of the program, to be run again and again.
class Command {
public:
    /// \param toRun  gives the exit status
    explicit Command(std::function<int()> toRun) : command(std::move(toRun)) {}

    CommandResult run();

private:
    std::function<int()> command;
    TemporaryFile output;
    TemporaryFile told;
};
