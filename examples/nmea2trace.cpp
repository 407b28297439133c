/// \file
/// Records an NMEA log as a trace file, one message per fix.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <optional>

#include "commandLine.h"
#include "nmeaLog.h"
#include "traceFile.h"

namespace {

constexpr const char* USAGE =
    "Usage: nmea2trace IN OUT\n"
    "Records the NMEA log IN (- is standard input) as the trace file OUT, one message per fix,\n"
    "stamped with its UTC in nanoseconds since 1970. Lines that are no sentence are skipped.\n";

constexpr uint64_t NANOSECONDS = 1'000'000'000;
constexpr uint64_t SECONDS_PER_DAY = 86400;

bool allDigits(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

unsigned twoDigits(const std::string& text, size_t pos) {
    return static_cast<unsigned>(text[pos] - '0') * 10 + static_cast<unsigned>(text[pos + 1] - '0');
}

// Of hhmmss, with or without a fraction; empty when it is no time of day.
std::optional<uint64_t> nanosecondsOfDay(const std::string& text) {
    const size_t point = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(0, point);
    std::string fraction = point < text.size() ? text.substr(point + 1) : "0";
    if (whole.size() != 6 || !allDigits(whole) || !allDigits(fraction)) {
        return std::nullopt;
    }
    const unsigned hour = twoDigits(whole, 0);
    const unsigned minute = twoDigits(whole, 2);
    const unsigned second = twoDigits(whole, 4);
    const unsigned lastSecond = hour == 23 && minute == 59 ? 60 : 59;  // with a leap second
    if (hour > 23 || minute > 59 || second > lastSecond) {
        return std::nullopt;
    }
    fraction.resize(9, '0');
    return (hour * 3600 + minute * 60 + second) * NANOSECONDS + std::stoul(fraction);
}

unsigned daysInMonth(unsigned year, unsigned month) {
    constexpr unsigned DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return DAYS[month - 1] + (month == 2 && year % 4 == 0 ? 1 : 0);  // also right in 2000
}

// Of ddmmyy from 1980 to 2079; empty when it is no date.
std::optional<uint64_t> daysSince1970(const std::string& text) {
    if (text.size() != 6 || !allDigits(text)) {
        return std::nullopt;
    }
    const unsigned day = twoDigits(text, 0);
    const unsigned month = twoDigits(text, 2);
    const unsigned year = twoDigits(text, 4) + (twoDigits(text, 4) < 80 ? 2000 : 1900);
    if (month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month)) {
        return std::nullopt;
    }
    unsigned days = (year - 1970) * 365 + (year - 1969) / 4 + day - 1;
    for (unsigned earlier = 1; earlier < month; ++earlier) {
        days += daysInMonth(year, earlier);
    }
    return days;
}

std::optional<timeStamp_t> utcOf(const GPSTraceMessage::gprmc_t& rmc) {
    const std::optional<uint64_t> days = daysSince1970(rmc.dateUTC);
    const std::optional<uint64_t> time = nanosecondsOfDay(rmc.timeUTC);
    if (!days || !time) {
        return std::nullopt;
    }
    return *days * SECONDS_PER_DAY * NANOSECONDS + *time;
}

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
    std::optional<Fix> fix{std::in_place};
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
    if ((time && fix->time && *time != *fix->time) || !fix->hasRoomFor(alone)) {
        endMessage();
    }
    if (!fix->store(sentence)) {
        endMessage();
        fix->store(sentence);
    }
    if (time) {
        fix->time = time;
    }
}

void Recorder::endMessage() {
    if (fix->sentences.empty()) {
        return;
    }
    stamp = utcOf(fix->held.getRMC()).value_or(stamp);
    GPSTraceMessage message(stamp, fix->sentences.front());
    for (size_t i = 1; i < fix->sentences.size(); ++i) {
        message.addRecord(fix->sentences[i]);
    }
    const std::vector<uint8_t> bytes = serialise(message);
    trace.write(reinterpret_cast<const char*>(bytes.data()),
                static_cast<std::streamsize>(bytes.size()));
    ++messageCount;
    byteCount += bytes.size();
    fix.emplace();
}

void checkWritten(const std::ostream& trace, const std::string& path) {
    if (!trace) {
        throw std::runtime_error(path + ": cannot be written");
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
    std::cout << log.linesRead() << " lines read, " << log.linesSkipped() << " skipped, "
              << log.linesRead() - log.linesSkipped() << " sentences stored, "
              << recorder.messagesWritten() << " messages, " << recorder.bytesWritten()
              << " bytes\n";
}

}  // namespace

int main(int argc, char* argv[]) {
    return runProgram({"nmea2trace", USAGE, {}, 2, run}, argc, argv);
}
