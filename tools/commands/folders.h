#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vextrace::tools {

/// Whether an output is a folder for a file of each input: its name ends in "/", or it is one.
bool isFolder(const std::string& output);

/// A command that gives each of its inputs an output of its own.
struct FolderWork {
    std::vector<std::string> inputs;
    std::string folder;  ///< made where it does not exist
    std::string ending;  ///< of the outputs, in place of that of the inputs: ".csv"
    unsigned jobs = 0;   ///< at most so many at a time; 0 is as many as there are processors
    /// Does one; gives its exit status, or throws.
    std::function<int(const std::string& input, const std::string& output)> run;
};

/// Runs a command for each input. What fails is told, and the others are done.
/// \return STATUS_OK, or STATUS_DATA where one failed
/// \throws UsageError where two inputs would become one output, or one of them is standard input
int fillFolder(const FolderWork& work);

}  // namespace vextrace::tools
