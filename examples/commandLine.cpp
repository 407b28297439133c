#include "commandLine.h"

#include <algorithm>
#include <iostream>

#include "numberText.h"

namespace {

bool isOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-';
}

bool contains(const std::vector<std::string>& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

CommandLine parse(const Program& program, const std::vector<std::string>& arguments) {
    CommandLine line;
    bool optionsEnded = false;
    for (const std::string& argument : arguments) {
        if (optionsEnded || !isOption(argument)) {
            line.files.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (contains(program.options, argument)) {
            line.options.push_back(argument);
        } else {
            throw UsageError("unknown option " + argument + ", try --help");
        }
    }
    if (line.files.size() != program.fileCount) {
        throw UsageError("takes " + counted(program.fileCount, "file name") + ", not " +
                         std::to_string(line.files.size()) + ", try --help");
    }
    return line;
}

void runOrHelp(const Program& program, const std::vector<std::string>& arguments) {
    if (contains(arguments, "--help") || contains(arguments, "-h")) {
        std::cout << program.usage;
    } else {
        program.run(parse(program, arguments));
    }
    if (!std::cout.flush()) {
        throw std::runtime_error("standard output cannot be written");
    }
}

int fail(const Program& program, const std::exception& error, int status) {
    std::cerr << program.name << ": " << error.what() << '\n';
    return status;
}

}  // namespace

int runProgram(const Program& program, int argc, char* argv[]) {
    // Without its own buffer std::cin takes a read error for the end of the input.
    std::ios::sync_with_stdio(false);
    try {
        runOrHelp(program, {argv + std::min(argc, 1), argv + argc});
        return 0;
    } catch (const UsageError& error) {
        return fail(program, error, 2);
    } catch (const std::exception& error) {
        return fail(program, error, 1);
    }
}
