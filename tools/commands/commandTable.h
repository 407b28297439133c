#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vextrace::tools {

/// An option or an argument of a command, as data.
struct OptionEntry {
    /// Where its value goes; a flag's is a bool.
    using Target = std::variant<bool*, int*, unsigned*, double*, std::optional<unsigned>*,
                                std::string*, std::vector<std::string>*>;

    std::string names;  ///< "-o,--output"; an argument has one without dashes
    std::string value;  ///< what the help calls its value; empty for flags and arguments
    std::string help;
    Target target;
    bool isRequired = false;
    std::vector<std::string> choices = {};  ///< the only values, in any case; empty: any value

    bool isArgument() const { return names[0] != '-'; }
    /// "-o" and "--output".
    std::vector<std::string> eachName() const;
};

struct CommandEntry {
    std::string name;
    std::string help;
    std::vector<OptionEntry> options;
    std::function<int()> run;  ///< with what the targets hold then; gives the exit status
};

/// The commands of the program, with room for the values of their options.
std::vector<CommandEntry> commandTable();

}  // namespace vextrace::tools
