#include "traceFile.h"

#include <algorithm>
#include <fstream>

#include "commandLine.h"

namespace {

std::vector<uint8_t> readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<uint8_t> content;
    std::vector<char> part(65536);
    while (file.read(part.data(), static_cast<std::streamsize>(part.size())), file.gcount() > 0) {
        content.insert(content.end(), part.begin(), part.begin() + file.gcount());
    }
    if (!file.is_open() || file.bad()) {
        throw UsageError(path + ": cannot be read");
    }
    return content;
}

std::string reasonOf(const InvalidMessageException& error) {
    const uint16_t value = error.getInvalidValue();
    return error.what() + (value == 0 ? "" : " (value " + std::to_string(value) + ")");
}

// Decoding ends at a NUL byte. Most likely it is in the header of another message, into which a wrong
// size field reaches; that message would be passed over in silence.
bool holdsNul(const uint8_t* message, size_t length) {
    return std::find(message + MessageBase::MO_BASE_DERIVED, message + length, 0) !=
           message + length;
}

}  // namespace

std::vector<uint8_t> serialise(const MessageBase& message) {
    std::vector<uint8_t> bytes(sizeOf(message) + MessageBase::MO_MSGID);
    uint8_t* dest = bytes.data();
    message.writeToByteArray(dest, bytes.size(), false);
    return bytes;
}

size_t sizeOf(const MessageBase& message) {
    return message.getSize();
}

bool addSentence(GPSTraceMessage& gps, const std::string& sentence) {
    const size_t before = sizeOf(gps);
    gps.addRecord(sentence);
    return sizeOf(gps) != before;
}

void splitFields(GPSTraceMessage& gps) {
    gps.addRecord(gps.getString());  // held already, so nothing is stored
}

TraceReader::TraceReader(const std::string& path) : name(path), content(readFile(path)) {
    GPSTraceMessage::registerMessage();
}

std::unique_ptr<GPSTraceMessage> TraceReader::next() {
    if (pos == content.size()) {
        return nullptr;
    }
    const uint8_t* const source = content.data() + pos;
    DecodedMessage decoded = MessageFactory::decode(source, content.size() - pos);
    if (decoded.error) {
        throw damage(reasonOf(*decoded.error));
    }
    if (holdsNul(source, decoded.bytesTaken)) {
        throw damage("The message holds a NUL byte, behind which nothing would be read.");
    }
    pos += decoded.bytesTaken;
    // The one reader that is registered makes nothing else.
    return std::unique_ptr<GPSTraceMessage>(
        static_cast<GPSTraceMessage*>(decoded.message.release()));
}

DamagedTrace TraceReader::damage(const std::string& reason) const {
    const std::string place = name + ": damaged at byte " + std::to_string(pos);
    return DamagedTrace{place + ": " + reason};
}
