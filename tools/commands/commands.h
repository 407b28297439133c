#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/io/errors.h"

namespace vextrace::tools {

// The commands of the program: each a function of its options, which are what the command line
// said. They give the exit status. \throws UsageError, DataError, BrokenPipe
//
// "-" as a name is standard input or standard output; an empty time, date or name was not given.

struct RecordCommand {
    std::string input = "-";
    std::string output = "-";
    std::optional<unsigned> baud;
    int idle = 500;  ///< milliseconds
    bool append = false;
    bool force = false;
    bool sync = false;
    bool quiet = false;
    std::string date;
    std::string stamp = "utc";
};
int record(const RecordCommand& options);

struct ShowCommand {
    bool fields = false;
    bool fix = false;
    bool rdb = false;
    bool hex = false;
    bool first = false;
    bool follow = false;
    bool number = false;
    bool utc = false;
    bool raw = false;
    std::string from;
    std::string until;
    std::string trace;
};
int show(const ShowCommand& options);

struct InfoCommand {
    double gap = 5;  ///< seconds
    bool json = false;
    std::string from;
    std::string until;
    std::vector<std::string> traces;
};
int info(const InfoCommand& options);

struct ExportCommand {
    std::string format;
    std::string output = "-";
    bool force = false;
    double gap = 5;  ///< seconds
    std::string from;
    std::string until;
    bool unchecked = false;
    std::vector<std::string> traces;
};
int exportTraces(const ExportCommand& options);

/// As the command line names them.
std::vector<std::string> exportFormats();

struct CheckCommand {
    std::string log;
    std::string trace;
    std::string date;
    std::string stamp = "utc";
    bool live = false;
};
int check(const CheckCommand& options);

struct RepairCommand {
    std::string input;
    std::string output;
    bool force = false;
};
int repair(const RepairCommand& options);

struct ReportCommand {
    std::string output = "-";
    bool force = false;
    double gap = 5;  ///< seconds
    std::string from;
    std::string until;
    std::vector<std::string> traces;
};
int report(const ReportCommand& options);

}  // namespace vextrace::tools
