#pragma once

#include <CLI/CLI.hpp>

#include "tools/io/errors.h"

namespace vextrace::tools {

/// The status that the command ends with where nothing is thrown.
using ExitStatus = int;

// Each adds its subcommand to the program's command line. Where the subcommand was given, it sets
// the status when the command line has been parsed.
void addRecord(CLI::App& app, ExitStatus& status);
void addShow(CLI::App& app, ExitStatus& status);
void addInfo(CLI::App& app, ExitStatus& status);
void addExport(CLI::App& app, ExitStatus& status);
void addCheck(CLI::App& app, ExitStatus& status);
void addRepair(CLI::App& app, ExitStatus& status);
void addReport(CLI::App& app, ExitStatus& status);

}  // namespace vextrace::tools
