/// \file
/// Proves that a trace file holds what the log said, and that it can be written again as it is.
#include <algorithm>
#include <iostream>

#include "commandLine.h"
#include "nmeaLog.h"
#include "traceFile.h"

namespace {

constexpr const char* USAGE =
    "Usage: checkTrace LOG TRACE\n"
    "Reads the trace file TRACE back. Checks that each message, written again, gives the bytes of\n"
    "the file, and that the messages hold all sentences of the NMEA log LOG (- is standard\n"
    "input), in the log's order.\n";

void checkBytes(const TraceReader& trace, const GPSTraceMessage& message, size_t begin) {
    const std::vector<uint8_t> written = serialise(message);
    const uint8_t* const file = trace.bytes().data();
    if (!std::equal(written.begin(), written.end(), file + begin, file + trace.position())) {
        throw std::runtime_error("the message at byte " + std::to_string(begin) +
                                 " is not the same when it is written again");
    }
}

// Stores the next sentence of the log; false when there is none, or its code is held already.
bool addNext(NmeaLog& log, GPSTraceMessage& message) {
    std::string sentence;
    return log.next(sentence) && addSentence(message, sentence);
}

// Builds the message anew from the log; returns how many sentences that took.
size_t checkSentences(NmeaLog& log, const GPSTraceMessage& message, size_t begin) {
    GPSTraceMessage expected;
    size_t count = 0;
    while (sizeOf(expected) < sizeOf(message) && addNext(log, expected)) {
        ++count;
    }
    if (!(expected == message)) {
        throw std::runtime_error("the message at byte " + std::to_string(begin) +
                                 " does not hold what the log says up to its line " +
                                 std::to_string(log.linesRead()));
    }
    return count;
}

void run(const CommandLine& arguments) {
    NmeaLog log(arguments.files[0]);
    TraceReader trace(arguments.files[1]);
    size_t messages = 0;
    size_t sentences = 0;
    size_t begin = 0;
    while (const std::unique_ptr<GPSTraceMessage> message = trace.next()) {
        checkBytes(trace, *message, begin);
        sentences += checkSentences(log, *message, begin);
        begin = trace.position();
        ++messages;
    }
    std::string sentence;
    if (log.next(sentence)) {
        throw std::runtime_error("the trace lacks the sentences of the log from its line " +
                                 std::to_string(log.linesRead()) + " on");
    }
    std::cout << messages << " messages written again: all " << begin << " bytes as in the file\n"
              << sentences << " sentences compared: all as in the log\n";
}

}  // namespace

int main(int argc, char* argv[]) {
    return runProgram({"checkTrace", USAGE, {}, 2, run}, argc, argv);
}
