/// \file
/// What the example programs do alike: arguments, error lines, exit statuses.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

/// The caller's mistake: arguments that make no sense, or an input that cannot be read.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The arguments of a program, sorted by their kind, each kind in the order given.
struct CommandLine {
    std::vector<std::string> options;
    std::vector<std::string> files;
};

struct Program {
    const char* name;
    const char* usage;                 ///< the text that --help and -h print
    std::vector<std::string> options;  ///< the options it knows, beside those two
    size_t fileCount;                  ///< how many file names it takes
    void (*run)(const CommandLine& arguments);
};

/// Runs a program; what it throws becomes one line on standard error. An argument that begins with
/// "-" is an option, unless it is "-" alone or stands behind "--".
///
/// \return the exit status: 0 when all went well; 2 for a UsageError; 1 for any other failure, also
///         when standard output could not be written
int runProgram(const Program& program, int argc, char* argv[]);
