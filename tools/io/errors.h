#pragma once

#include <functional>
#include <stdexcept>

namespace vextrace::tools {

/// Exit statuses of the program.
enum Status : int {
    STATUS_OK = 0,
    STATUS_DATA = 1,  ///< data that are damaged, missing or different; a device that fails
    STATUS_USAGE = 2  ///< a command line that cannot be carried out; nothing was changed
};

/// Ends the command with STATUS_DATA. The text names the file, the byte or line, and the reason; it
/// is one line without the program's name and without a line end.
class DataError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An input that cannot be read on.
class ReadError : public DataError {
public:
    using DataError::DataError;
};

/// Ends the command with STATUS_USAGE; the text likewise says what to do.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Ends the command as a signal asks for.
class Interrupted : public std::exception {
public:
    explicit Interrupted(int number) : signal(number) {}

    const int signal;
};

/// Ends the program quietly: whoever read its output has gone.
class BrokenPipe : public std::exception {};

/// Runs a command, and tells why it ended where it threw.
/// \return the exit status of the program
int outcomeOf(const std::function<int()>& command);

}  // namespace vextrace::tools
