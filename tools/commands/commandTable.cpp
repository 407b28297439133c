#include "tools/commands/commandTable.h"

#include <memory>
#include <sstream>

#include "tools/commands/commands.h"

namespace vextrace::tools {

namespace {

constexpr bool REQUIRED = true;

OptionEntry jobs(unsigned& to) {
    return {"--jobs", "N", "for a folder: do so many at a time, instead of one for each processor",
            &to};
}

OptionEntry force(bool& to) {
    return {"--force", "", "replace the output where it exists", &to};
}

OptionEntry from(std::string& to) {
    return {"--from", "UTC", "leave out what is before this time, such as 2026-11-21T12:35:19Z",
            &to};
}

OptionEntry until(std::string& to, const char* names = "--until") {
    return {names, "UTC", "leave out what is behind this time", &to};
}

OptionEntry stamp(std::string& to, const char* help) {
    return {"--stamp", "SOURCE", help, &to, !REQUIRED, {"utc", "arrival"}};
}

CommandEntry recordEntry() {
    const auto to = std::make_shared<RecordCommand>();
    return {
        "record",
        "Records what a receiver sends as a trace: one epoch, one place, one time stamp. An "
        "epoch\n"
        "is written as soon as it is over.\n"
        "Example: vextrace record -o drive.trace --baud 9600 /dev/ttyACM0",
        {
            {"IN", "", "a log, a FIFO or a serial line; standard input unless given, or -",
             &to->inputs},
            {"-o,--output", "TRACE",
             "the trace; standard output unless given, or -; a folder/ takes one of each log",
             &to->output},
            {"--append", "",
             "go on behind an existing trace; a torn message at its end is moved to a file "
             "beside it",
             &to->append},
            {"--force", "", "replace an existing file", &to->force},
            jobs(to->jobs),
            {"--baud", "RATE", "bits a second of a serial line; what it is set to unless given",
             &to->baud},
            {"--idle", "MILLISECONDS", "silence that ends an epoch, 500 unless given", &to->idle},
            {"--sync", "", "wait behind each epoch until the device has it", &to->sync},
            {"--quiet", "", "tell of faults alone, and show no line meanwhile", &to->quiet},
            {"--date", "YYYY-MM-DD", "the day, as long as the receiver sends none", &to->date},
            stamp(to->stamp,
                  "utc, the receiver's date and time (default), or arrival, the system's clock at "
                  "an epoch's first byte"),
        },
        [to] { return record(*to); }};
}

CommandEntry showEntry() {
    const auto to = std::make_shared<ShowCommand>();
    return {
        "show",
        "Prints the trace line of each GPS message of a trace, or other views of it.\n"
        "Example: vextrace show --utc --fix drive.trace",
        {
            {"--fields", "", "the fields of its RMC and GGA sentences, numbered, without line ends",
             &to->fields},
            {"--fix", "", "its RMC and GGA sentences as numbers", &to->fix},
            {"--rdb", "", "the RDB text; nothing without a position", &to->rdb},
            {"--hex", "", "its bytes in the trace", &to->hex},
            {"--first", "", "only the first message that has a valid fix", &to->first},
            from(to->from),
            until(to->until, "--until,--to"),
            {"--number", "", "each line begins with the message's number in the trace",
             &to->number},
            {"--utc", "",
             "each line begins with the message's time stamp as UTC, - where it has no date",
             &to->utc},
            {"--raw", "",
             "write control characters and bytes that are no UTF-8 as they are, not as escapes "
             "such as \\x1b",
             &to->raw},
            {"--follow", "", "wait for more at the end, until interrupted", &to->follow},
            {"TRACE", "", "the trace; - is standard input", &to->trace, REQUIRED},
        },
        [to] { return show(*to); }};
}

CommandEntry infoEntry() {
    const auto to = std::make_shared<InfoCommand>();
    return {"info",
            "Sums up traces: what is in them, when and where it was recorded, how good it is. Of "
            "several\n"
            "a table with a line each.\n"
            "Example: vextrace info drive.trace",
            {
                {"--gap", "SECONDS", "call a longer pause a gap (5)", &to->gap},
                from(to->from),
                until(to->until),
                {"--json", "", "write JSON, for programs", &to->json},
                {"--long", "", "write all of each trace where there are several, and rare codes",
                 &to->longForm},
                {"TRACE", "", "traces; - is standard input", &to->traces, REQUIRED},
            },
            [to] { return info(*to); }};
}

CommandEntry exportEntry() {
    const auto to = std::make_shared<ExportCommand>();
    return {
        "export",
        "Writes the fixes of traces, or their sentences, in a format that other programs read.\n"
        "Example: vextrace export -o drive.gpx drive.trace",
        {
            {"--to,--format", "FORMAT",
             "the format, where the name of the output does not end in it", &to->format, !REQUIRED,
             exportFormats()},
            {"-o,--output", "FILE",
             "file to write; standard output is -; a folder/ takes one of each trace", &to->output},
            force(to->force),
            jobs(to->jobs),
            {"--gap", "SECONDS", "begin a new line behind so long a time without a fix (5)",
             &to->gap},
            from(to->from),
            until(to->until),
            {"--unchecked", "", "take fixes whose sentences have a wrong checksum, too",
             &to->unchecked},
            {"TRACE", "", "traces, in this order; standard input is -", &to->traces, REQUIRED},
        },
        [to] { return exportTraces(*to); }};
}

CommandEntry checkEntry() {
    const auto to = std::make_shared<CheckCommand>();
    return {"check",
            "Proves that a trace holds what the receiver sent: every sentence of the log, in its\n"
            "epoch's messages, under the time that it says.\n"
            "Example: vextrace check drive.nmea drive.trace",
            {
                {"LOG", "", "what the receiver sent; - is standard input", &to->log, REQUIRED},
                {"TRACE", "", "the recording; - is standard input", &to->trace, REQUIRED},
                {"--date", "YYYY-MM-DD", "the day that record was told", &to->date},
                stamp(to->stamp, "the stamps that record was told: utc (default) or arrival"),
                {"--live", "",
                 "the log was recorded as it came: silence or a stop may have divided epochs",
                 &to->live},
            },
            [to] { return check(*to); }};
}

CommandEntry cutEntry() {
    const auto to = std::make_shared<CutCommand>();
    return {"cut",
            "Copies the messages of a span of time, of all types, byte for byte; of several traces "
            "one\n"
            "behind the other.\n"
            "Example: vextrace cut --from 2026-11-21T12:35 --until 2026-11-21T12:40 -o part.trace "
            "drive.trace",
            {
                from(to->from),
                until(to->until),
                {"-o,--output", "TRACE", "file to write; standard output is -", &to->output},
                force(to->force),
                {"TRACE", "", "traces, in this order; standard input is -", &to->traces, REQUIRED},
            },
            [to] { return cut(*to); }};
}

CommandEntry repairEntry() {
    const auto to = std::make_shared<RepairCommand>();
    return {
        "repair",
        "Copies every message of a damaged trace that can be found, byte for byte, and names "
        "the\n"
        "bytes passed over. The status is 1 where there were any: OUT is whole, something is "
        "lost.\n"
        "Example: vextrace repair broken.trace mended.trace",
        {
            {"IN", "",
             "the trace, and behind it OUT, the file to write; - is standard input or output",
             &to->names, REQUIRED},
            {"-o,--output", "OUT",
             "the file to write, behind which all names are traces; a folder/ takes one of each",
             &to->output},
            {"--force", "", "replace OUT where it exists", &to->force},
            jobs(to->jobs),
        },
        [to] { return repair(*to); }};
}

CommandEntry reportEntry() {
    const auto to = std::make_shared<ReportCommand>();
    return {
        "report",
        "Writes a page for the browser that shows a drive: track, speed, altitude, satellites.\n"
        "Example: vextrace report -o drive.html drive.trace",
        {
            {"-o,--output", "FILE",
             "file to write; standard output is -; a folder/ takes one of each trace", &to->output},
            force(to->force),
            jobs(to->jobs),
            {"--gap", "SECONDS", "leave lines open behind so long a time without a fix (5)",
             &to->gap},
            from(to->from),
            until(to->until),
            {"TRACE", "", "traces, in this order; standard input is -", &to->traces, REQUIRED},
        },
        [to] { return report(*to); }};
}

}  // namespace

std::vector<std::string> OptionEntry::eachName() const {
    std::vector<std::string> result;
    std::istringstream list(names);
    for (std::string name; std::getline(list, name, ',');) {
        result.push_back(name);
    }
    return result;
}

std::vector<CommandEntry> commandTable() {
    return {recordEntry(), showEntry(), infoEntry(),   exportEntry(),
            checkEntry(),  cutEntry(),  repairEntry(), reportEntry()};
}

}  // namespace vextrace::tools
