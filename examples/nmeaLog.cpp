#include "nmeaLog.h"

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

NmeaLog::NmeaLog(const std::string& path) : file(path) {
    GPSTraceMessage::registerMessage();
}

bool NmeaLog::next(std::string& sentence) {
    while (std::getline(file.bytes(), sentence)) {
        ++lines;
        if (isSentence(sentence)) {
            return true;
        }
        ++skipped;
    }
    file.checkRead();
    return false;
}
