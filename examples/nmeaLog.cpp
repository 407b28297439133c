#include "nmeaLog.h"

#include <iostream>

#include "commandLine.h"
#include "traceFile.h"

namespace {

// Asks the library instead of repeating its rules.
bool survivesTrace(const std::string& line) {
    const GPSTraceMessage message(0, line);
    try {
        const std::vector<uint8_t> bytes = serialise(message);
        const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
        return decoded.message != nullptr && message == *decoded.message;
    } catch (const InvalidMessageException&) {
        return false;
    }
}

bool isSentence(const std::string& line) {
    return !line.empty() && (line.front() == '$' || line.front() == '!') && survivesTrace(line);
}

}  // namespace

NmeaLog::NmeaLog(const std::string& path)
    : name(path), stream(path == "-" ? std::cin : static_cast<std::istream&>(file)) {
    GPSTraceMessage::registerMessage();
    if (&stream == &file) {
        file.open(path, std::ios::binary);
    }
    stream.peek();  // a directory can be opened, but not read
    checkReadable();
}

bool NmeaLog::next(std::string& sentence) {
    while (std::getline(stream, sentence)) {
        ++lines;
        if (isSentence(sentence)) {
            return true;
        }
        ++skipped;
    }
    checkReadable();
    return false;
}

void NmeaLog::checkReadable() const {
    if (stream.bad() || (&stream == &file && !file.is_open())) {
        throw UsageError(name + ": cannot be read");
    }
}
