#include "tools/commands/suggestion.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string_view>

#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

// How many letters must be changed, put in or left out to make one of the other.
size_t distance(std::string_view from, std::string_view to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t k = 0; k < to.size(); ++k) {
            const size_t changed = diagonal + (from[i] == to[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({changed, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

// "; did you mean NAME?", or nothing where no name is near.
std::string hint(const std::string& word, const std::vector<std::string>& names) {
    const auto nearest = std::min_element(names.begin(), names.end(),
                                          [&](const std::string& a, const std::string& b) {
                                              return distance(word, a) < distance(word, b);
                                          });
    const bool isNear = nearest != names.end() && distance(word, *nearest) <= word.size() / 3;
    return isNear ? fmt::format("; did you mean {}?", *nearest) : std::string();
}

std::vector<std::string> commandNames(const std::vector<CommandEntry>& commands) {
    std::vector<std::string> names;
    names.reserve(commands.size() + 1);
    for (const CommandEntry& command : commands) {
        names.push_back(command.name);
    }
    names.emplace_back("help");
    return names;
}

// Of a command; of the program where there is none.
std::vector<std::string> optionNames(const CommandEntry* command) {
    std::vector<std::string> names = {"-h", "--help"};
    if (command == nullptr) {
        names.emplace_back("--version");
        return names;
    }
    for (const OptionEntry& option : command->options) {
        if (!option.isArgument()) {
            const std::vector<std::string> each = option.eachName();
            names.insert(names.end(), each.begin(), each.end());
        }
    }
    return names;
}

// The name of an option in an argument: all of "--fix", some of "--gap=3" and "-otrace".
std::string optionName(const std::string& argument) {
    return argument.starts_with("--") ? argument.substr(0, argument.find('='))
                                      : argument.substr(0, 2);
}

bool isOption(const std::string& argument) {
    const bool isNegativeNumber = argument.size() > 1 && argument[1] >= '0' && argument[1] <= '9';
    return argument.size() > 1 && argument[0] == '-' && argument != "--" && !isNegativeNumber;
}

bool exists(const std::string& name, const std::vector<std::string>& names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Null where there is none.
const CommandEntry* commandNamed(const std::vector<CommandEntry>& commands,
                                 const std::string& name) {
    const auto named = std::find_if(commands.begin(), commands.end(),
                                    [&](const CommandEntry& entry) { return entry.name == name; });
    return named == commands.end() ? nullptr : &*named;
}

// The command that the arguments begin with; null where there is none.
const CommandEntry* commandOf(const std::vector<CommandEntry>& commands,
                              const std::vector<std::string>& arguments) {
    return arguments.empty() ? nullptr : commandNamed(commands, arguments.front());
}

bool takesValue(const CommandEntry& command, const std::string& name) {
    return std::any_of(command.options.begin(), command.options.end(),
                       [&](const OptionEntry& option) {
                           return !option.value.empty() && exists(name, option.eachName());
                       });
}

}  // namespace

std::optional<std::string> unknownName(const std::vector<CommandEntry>& commands,
                                       const std::vector<std::string>& arguments) {
    const CommandEntry* command = nullptr;
    for (const std::string& argument : arguments) {
        if (argument == "--") {
            break;
        }
        if (isOption(argument)) {
            const std::string name = optionName(argument);
            const std::vector<std::string> names = optionNames(command);
            if (!exists(name, names)) {
                return fmt::format("{}: no option of {}{}", escaped(name),
                                   command == nullptr ? "vextrace" : command->name,
                                   hint(name, names));
            }
        } else if (command == nullptr) {
            command = commandNamed(commands, argument);
            if (command == nullptr) {
                return fmt::format("{}: no command{}", escaped(argument),
                                   hint(argument, commandNames(commands)));
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> doubledOption(const std::vector<CommandEntry>& commands,
                                         const std::vector<std::string>& arguments) {
    const CommandEntry* const command = commandOf(commands, arguments);
    if (command == nullptr) {
        return std::nullopt;
    }
    for (const OptionEntry& option : command->options) {
        const std::vector<std::string> names = option.eachName();
        const auto end = std::find(arguments.begin(), arguments.end(), "--");
        const auto count = std::count_if(arguments.begin(), end, [&](const std::string& argument) {
            return isOption(argument) && exists(optionName(argument), names);
        });
        if (count > 1 && !option.value.empty()) {
            return fmt::format("{}: is given {} times", names.front(), count);
        }
    }
    return std::nullopt;
}

std::optional<std::string> emptyOption(const std::vector<CommandEntry>& commands,
                                       const std::vector<std::string>& arguments) {
    const CommandEntry* const command = commandOf(commands, arguments);
    for (size_t i = 1; command != nullptr && i < arguments.size() && arguments[i] != "--"; ++i) {
        const std::string name = optionName(arguments[i]);
        if (!takesValue(*command, name)) {
            continue;
        }
        const bool isAlone = arguments[i] == name;  // the value is the next one
        if (isAlone ? i + 1 < arguments.size() && arguments[i + 1].empty()
                    : arguments[i] == name + '=') {
            return name + ": its value is empty";
        }
        i += isAlone ? 1 : 0;
    }
    return std::nullopt;
}

}  // namespace vextrace::tools
