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
// An output that is a folder, or whose name ends in "/", takes a file for each input.

struct RecordCommand {
    std::vector<std::string> inputs;  ///< none: standard input
    std::string output = "-";
    unsigned jobs = 0;  ///< for folders: at most so many at a time; 0 is a job for each processor
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
    bool longForm = false;
    std::string from;
    std::string until;
    std::vector<std::string> traces;
};
int info(const InfoCommand& options);

struct ExportCommand {
    std::string format;  ///< empty: by the ending of the output
    std::string output = "-";
    bool force = false;
    unsigned jobs = 0;
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

struct CutCommand {
    std::string output = "-";
    bool force = false;
    std::string from;
    std::string until;
    std::vector<std::string> traces;
};
int cut(const CutCommand& options);

struct RepairCommand {
    std::vector<std::string> names;  ///< the trace and the output; with an output below: traces
    std::string output;
    bool force = false;
    unsigned jobs = 0;
};
int repair(const RepairCommand& options);

struct ReportCommand {
    std::string output = "-";
    bool force = false;
    unsigned jobs = 0;
    double gap = 5;  ///< seconds
    std::string from;
    std::string until;
    std::vector<std::string> traces;
};
int report(const ReportCommand& options);

}  // namespace vextrace::tools
