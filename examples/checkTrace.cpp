/// \file
/// Proves that a trace file holds what the log said, and that it can be written again as it is.
#include <iostream>

#include "commandLine.h"
#include "nmeaLog.h"
#include "numberText.h"
#include "traceFile.h"
#include "utc.h"

namespace {

constexpr const char* USAGE =
    "Usage: checkTrace LOG TRACE\n"
    "Reads the trace file TRACE back (LOG or TRACE may be -, standard input). Checks that\n"
    "- each message, written again, gives the bytes of the file,\n"
    "- the messages hold all sentences of the NMEA log LOG, in the log's order,\n"
    "- each time stamp is the UTC of the RMC sentence, or else that of the message before.\n";

std::runtime_error difference(const TraceReader& trace, const std::string& what) {
    return std::runtime_error("the message at byte " + std::to_string(trace.position()) + what);
}

// Stores the next sentence of the log; false when there is none, or its code is held already.
bool addNext(NmeaLog& log, GPSTraceMessage& message) {
    std::string sentence;
    return log.next(sentence) && addSentence(message, sentence);
}

void checkBytes(const TraceReader& trace, const GPSTraceMessage& message) {
    if (serialise(message) != trace.bytes()) {
        throw difference(trace, " is not the same when it is written again");
    }
}

// Builds the message anew from the log; returns how many sentences that took.
size_t checkSentences(const TraceReader& trace, const GPSTraceMessage& message, NmeaLog& log) {
    GPSTraceMessage expected;
    size_t count = 0;
    while (sizeOf(expected) < sizeOf(message) && addNext(log, expected)) {
        ++count;
    }
    if (!(expected == message)) {
        throw difference(trace, " does not hold what the log says up to its line " +
                                    std::to_string(log.linesRead()));
    }
    return count;
}

// Returns the time stamp of the message.
timeStamp_t checkTimeStamp(const TraceReader& trace, GPSTraceMessage& message, timeStamp_t before) {
    splitFields(message);
    if (message.getTimeStamp() != utcOf(message.getRMC()).value_or(before)) {
        throw difference(trace, " does not bear the time of its sentences");
    }
    return message.getTimeStamp();
}

void run(const CommandLine& arguments) {
    NmeaLog log(arguments.files[0]);
    TraceReader trace(arguments.files[1]);
    timeStamp_t stamp = 0;
    size_t messages = 0;
    size_t bytes = 0;
    size_t sentences = 0;
    while (const std::unique_ptr<GPSTraceMessage> message = trace.next()) {
        checkBytes(trace, *message);
        sentences += checkSentences(trace, *message, log);
        stamp = checkTimeStamp(trace, *message, stamp);
        bytes += trace.bytes().size();
        ++messages;
    }
    std::string sentence;
    if (log.next(sentence)) {
        throw std::runtime_error("the trace lacks the sentences of the log from its line " +
                                 std::to_string(log.linesRead()) + " on");
    }
    std::cout << counted(messages, "message") << " written again: the same "
              << counted(bytes, "byte") << " as in the file\n"
              << counted(sentences, "sentence") << " compared: the same as in the log\n"
              << counted(messages, "time stamp") << " compared: the same as the sentences say\n";
}

}  // namespace

int main(int argc, char* argv[]) {
    return runProgram({"checkTrace", USAGE, {}, 2, run}, argc, argv);
}
