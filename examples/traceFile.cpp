#include "traceFile.h"

#include <algorithm>
#include <utility>

#include "inputFile.h"
#include "numberText.h"

namespace {

std::vector<uint8_t> readFile(const std::string& path) {
    InputFile file(path);
    std::istream& bytes = file.bytes();
    std::vector<uint8_t> content;
    std::vector<char> part(65536);
    while (bytes.read(part.data(), static_cast<std::streamsize>(part.size())), bytes.gcount() > 0) {
        content.insert(content.end(), part.begin(), part.begin() + bytes.gcount());
    }
    file.checkRead();
    return content;
}

// What the value of the error means follows from its cause.
std::string reasonOf(const InvalidMessageException& error, size_t bytesLeft) {
    const std::string value = std::to_string(error.getInvalidValue());
    const std::string left = counted(bytesLeft, "byte") + " left";
    if (error.getCause() == IM_INVALID_MSGID) {
        return std::string(error.what()) + " (id " + value + ")";
    }
    if (error.getCause() != IM_INVALID_LEN) {
        return error.what();
    }
    const bool holdsHeader = bytesLeft >= MessageBase::MO_BASE_DERIVED;
    return error.what() + (holdsHeader ? " (size field " + value + ", " + left : " (" + left) + ")";
}

// Decoding ends at a NUL byte. Most likely it is in the header of another message, into which a
// wrong size field reaches; that message would be passed over in silence.
bool holdsNul(const uint8_t* message, size_t length) {
    return std::find(message + MessageBase::MO_BASE_DERIVED, message + length, 0) !=
           message + length;
}

}  // namespace

std::vector<uint8_t> serialise(const MessageBase& message) {
    std::vector<uint8_t> bytes(sizeOf(message) + MessageBase::MSGSIZE_LENGTH);
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
    while (end < content.size()) {
        begin = end;
        if (std::unique_ptr<MessageBase> message = decode()) {
            // The one reader that is registered makes nothing else.
            return std::unique_ptr<GPSTraceMessage>(
                static_cast<GPSTraceMessage*>(message.release()));
        }
    }
    if (passedOver != 0) {
        throw DamagedTrace(name + ": " + counted(passedOver, "message") +
                           " passed over, the first at byte " + firstPassedOver);
    }
    return nullptr;
}

std::unique_ptr<MessageBase> TraceReader::decode() {
    const uint8_t* const source = content.data() + begin;
    const size_t bytesLeft = content.size() - begin;
    DecodedMessage decoded = MessageFactory::decode(source, bytesLeft);
    if (decoded.error) {
        passOver(*decoded.error, bytesLeft);
    } else if (holdsNul(source, decoded.bytesTaken)) {
        throw damage("The message holds a NUL byte, behind which nothing would be read.");
    }
    end = begin + decoded.bytesTaken;
    return std::move(decoded.message);
}

void TraceReader::passOver(const InvalidMessageException& error, size_t bytesLeft) {
    const std::string reason = reasonOf(error, bytesLeft);
    if (error.getCause() != IM_INVALID_MSGID) {
        throw damage(reason);
    }
    if (passedOver == 0) {
        firstPassedOver = std::to_string(begin) + ": " + reason;
    }
    ++passedOver;
}

DamagedTrace TraceReader::damage(const std::string& reason) const {
    return DamagedTrace{name + ": damaged at byte " + std::to_string(begin) + ": " + reason};
}
