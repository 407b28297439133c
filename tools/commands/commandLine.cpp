// The only file that includes CLI11, which takes long to compile.
#include "tools/commands/commandLine.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <type_traits>

#include "libvextrace/version.h"
#include "tools/commands/commandTable.h"
#include "tools/commands/suggestion.h"
#include "tools/io/OutputFile.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

void addOption(CLI::App& command, const OptionEntry& entry) {
    CLI::Option* option = std::visit(
        [&](auto* target) {
            if constexpr (std::is_same_v<decltype(target), bool*>) {
                return command.add_flag(entry.names, *target, entry.help);
            } else {
                return command.add_option(entry.names, *target, entry.help);
            }
        },
        entry.target);
    option->required(entry.isRequired);
    if (!entry.value.empty()) {
        option->type_name(entry.value);
    }
    if (!entry.choices.empty()) {
        option->transform(CLI::IsMember(entry.choices, CLI::ignore_case));
    }
}

void addCommand(CLI::App& app, const CommandEntry& entry) {
    CLI::App* const command = app.add_subcommand(entry.name, entry.help);
    for (const OptionEntry& option : entry.options) {
        addOption(*command, option);
    }
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

// CLI11 wants the last one first, and takes "[a]" for a list. So such an argument, and one that
// begins with the mark, goes in behind a mark.
constexpr char MARK = '\1';

std::vector<std::string> forParser(const std::vector<std::string>& arguments) {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    for (std::string& argument : reversed) {
        if (argument == "++" || (argument.starts_with('[') && argument.ends_with(']')) ||
            argument.starts_with(MARK)) {
            argument.insert(0, 1, MARK);
        }
    }
    return reversed;
}

void takeMark(std::string& text) {
    if (text.starts_with(MARK)) {
        text.erase(0, 1);
    }
}

void takeMarks(const CommandEntry& command) {
    for (const OptionEntry& option : command.options) {
        if (auto* const* one = std::get_if<std::string*>(&option.target)) {
            takeMark(**one);
        } else if (auto* const* many = std::get_if<std::vector<std::string>*>(&option.target)) {
            std::for_each((*many)->begin(), (*many)->end(), takeMark);
        }
    }
}

// What is wrong, with the first name that is.
std::string refusalOf(const CLI::App& app, const CLI::ParseError& error,
                      const std::vector<CommandEntry>& commands,
                      const std::vector<std::string>& arguments) {
    if (const std::optional<std::string> unknown = unknownName(commands, arguments)) {
        return *unknown;
    }
    if (const std::optional<std::string> doubled = doubledOption(commands, arguments)) {
        return *doubled;
    }
    const std::vector<std::string> rest = app.remaining(true);
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) && !rest.empty()) {
        return escaped(rest.front()) + ": is one name too many";
    }
    return escaped(error.what());
}

// "vextrace" and "vextrace help COMMAND" as options.
std::vector<std::string> withoutHelp(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        return {"--help"};
    }
    if (arguments[0] != "help") {
        return arguments;
    }
    if (arguments.size() > 2 && !arguments[2].starts_with('-')) {
        throw UsageError(escaped(arguments[2]) + ": is one name too many");
    }
    std::vector<std::string> others(arguments.begin() + 1, arguments.end());
    others.emplace_back("--help");
    return others;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& given) {
    const std::vector<std::string> arguments = withoutHelp(given);
    CLI::App app(
        "Records GPS receivers as traces, and looks at, converts, checks and mends them.\n"
        "Example: vextrace record -o drive.trace --baud 9600 /dev/ttyACM0",
        "vextrace");
    app.set_version_flag("--version", fmt::format("vextrace {}.{}.{}", VEXTRACE_VERSION_MAJOR,
                                                  VEXTRACE_VERSION_MINOR, VEXTRACE_VERSION_PATCH));
    app.require_subcommand(1);
    const std::vector<CommandEntry> commands = commandTable();
    for (const CommandEntry& command : commands) {
        addCommand(app, command);
    }
    app.add_subcommand("help",
                       "Shows the help of the program, or of a command.\n"
                       "Example: vextrace help record");
    if (const std::optional<std::string> empty = emptyOption(commands, arguments)) {
        throw UsageError(*empty);
    }
    try {
        app.parse(forParser(arguments));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0 && !unknownName(commands, arguments)) {
            return showHelp(app, error);
        }
        throw UsageError(refusalOf(app, error, commands, arguments));
    }
    for (const CommandEntry& command : commands) {
        if (app.got_subcommand(command.name)) {
            takeMarks(command);
            return command.run();
        }
    }
    return STATUS_USAGE;
}

}  // namespace vextrace::tools
