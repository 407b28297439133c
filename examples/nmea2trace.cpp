/// \file
/// Records an NMEA log as a trace file, one message per fix.
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <optional>

#include "commandLine.h"
#include "inputFile.h"
#include "nmeaLog.h"
#include "numberText.h"
#include "traceFile.h"
#include "utc.h"

namespace {

constexpr const char* USAGE =
    "Usage: nmea2trace IN OUT\n"
    "Records the NMEA log IN (- is standard input) as the trace file OUT, one message per fix.\n"
    "Its time stamp is the UTC of its RMC sentence in nanoseconds since 1970; without date and\n"
    "time the one of the message before, 0 in front of the first. Lines that are no sentence are\n"
    "skipped. Without a single sentence OUT is an empty file and the exit status 1.\n";

// Sentences that make one message. Its stamp is known only when they are complete.
struct Fix {
    GPSTraceMessage held;
    std::vector<std::string> sentences;
    std::optional<uint64_t> time;  // of its RMC or GGA sentence

    // False when the code is held already.
    bool store(const std::string& sentence) {
        if (!addSentence(held, sentence)) {
            return false;
        }
        sentences.push_back(sentence);
        return true;
    }

    [[nodiscard]] bool hasRoomFor(const GPSTraceMessage& sentence) const {
        const size_t added = sizeOf(sentence) - sizeOf(GPSTraceMessage());
        return sizeOf(held) + added <= std::numeric_limits<uint16_t>::max();
    }
};

class Recorder {
public:
    explicit Recorder(std::ostream& stream) : trace(stream) {}

    void record(const std::string& sentence);

    // Writes the sentences recorded so far as a message, if there are any.
    void endMessage();

    [[nodiscard]] size_t messagesWritten() const { return messageCount; }
    [[nodiscard]] size_t bytesWritten() const { return byteCount; }

private:
    std::ostream& trace;
    Fix fix;
    timeStamp_t stamp = 0;
    size_t messageCount = 0;
    size_t byteCount = 0;
};

void Recorder::record(const std::string& sentence) {
    GPSTraceMessage alone;
    alone.addRecord(sentence);
    const bool isRMC = alone.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPRMC);
    const std::optional<uint64_t> time =
        nanosecondsOfDay(isRMC ? alone.getRMC().timeUTC : alone.getGGA().timeUTC);
    if ((time && fix.time && *time != *fix.time) || !fix.hasRoomFor(alone)) {
        endMessage();
    }
    if (!fix.store(sentence)) {
        endMessage();
        fix.store(sentence);
    }
    if (time) {
        fix.time = time;
    }
}

void Recorder::endMessage() {
    if (fix.sentences.empty()) {
        return;
    }
    stamp = utcOf(fix.held.getRMC()).value_or(stamp);
    GPSTraceMessage message(stamp, fix.sentences.front());
    for (size_t i = 1; i < fix.sentences.size(); ++i) {
        message.addRecord(fix.sentences[i]);
    }
    const std::vector<uint8_t> bytes = serialise(message);
    trace.write(reinterpret_cast<const char*>(bytes.data()),
                static_cast<std::streamsize>(bytes.size()));
    ++messageCount;
    byteCount += bytes.size();
    fix = Fix();
}

void checkWritten(const std::ostream& trace, const std::string& path) {
    if (!trace) {
        throw std::runtime_error(withReason(path + ": cannot be written"));
    }
}

void run(const CommandLine& arguments) {
    const std::string& in = arguments.files[0];
    const std::string& out = arguments.files[1];
    std::error_code ignored;
    if (in != "-" && std::filesystem::equivalent(in, out, ignored)) {
        throw UsageError(out + ": is the log itself");
    }
    NmeaLog log(in);
    errno = 0;
    std::ofstream trace(out, std::ios::binary);
    checkWritten(trace, out);
    Recorder recorder(trace);
    std::string sentence;
    while (log.next(sentence)) {
        recorder.record(sentence);
        checkWritten(trace, out);
    }
    recorder.endMessage();
    trace.close();
    checkWritten(trace, out);
    std::cout << counted(log.linesRead(), "line") << " read, " << log.linesSkipped() << " skipped, "
              << counted(log.linesRead() - log.linesSkipped(), "sentence") << " stored, "
              << counted(recorder.messagesWritten(), "message") << ", "
              << counted(recorder.bytesWritten(), "byte") << '\n';
    if (recorder.messagesWritten() == 0) {
        throw std::runtime_error(in + ": holds no NMEA sentence");
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    return runProgram({"nmea2trace", USAGE, {}, 2, run}, argc, argv);
}
