// What a program of a user's does across the boundary of the library: throw, catch, derive, cast.
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/version.h"
#include "libvexutil/datablock.h"

namespace {

const msgid_t MSGID_REFUSED = static_cast<msgid_t>(MSGID_GPS + 1);

MessageBase* refuse(const uint8_t*, size_t) {
    throw InvalidMessageException(IM_INVALID_PARAMETER, "refused", 0x1234);
}

bool catchesWhatTheLibraryThrows() {
    const GPSTraceMessage message(0x0102, "$GPRMC,123519,A*00");
    const MessageBase& base = message;
    uint8_t* nowhere = nullptr;
    try {
        base.writeToByteArray(nowhere, 3, false);
    } catch (const InvalidMessageException& e) {
        return e.getCause() == IM_INVALID_LEN && e.getInvalidValue() == 3;
    }
    return false;
}

bool throwsWhatTheLibraryCatches() {
    MessageFactory::registerReader(MSGID_REFUSED, &refuse);
    std::vector<uint8_t> bytes(14);
    uint16ToByteArray(12, bytes.data());
    uint16ToByteArray(MSGID_REFUSED, bytes.data() + 2);
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    return decoded.error && decoded.error->getCause() == IM_INVALID_PARAMETER &&
           decoded.error->getInvalidValue() == 0x1234;
}

bool castsAMessageThatTheLibraryMade() {
    const uint8_t bytes[] = {0x00};
    MessageBase::invalidHandling = IMH_RETURN_INVALID_MESSAGE;
    const DecodedMessage decoded = MessageFactory::decode(bytes, sizeof bytes);
    return decoded.message != nullptr && decoded.message->getMsgID() == MSGID_INVALID &&
           dynamic_cast<GPSTraceMessage*>(decoded.message.get()) == nullptr;
}

// The headers and the library are of one installation.
bool learnsTheVersionOfTheLibrary() {
    return vextrace::version() == VEXTRACE_VERSION;
}

struct DegreeReader : GPSTraceMessage {
    using GPSTraceMessage::coordinateToDouble;
};

bool derivesFromTheLibrary() {
    DegreeReader message;
    message.addRecord(std::string(GPSTraceMessage::GPRMC) + ",1*00");
    const MessageBase& base = message;
    return dynamic_cast<const DegreeReader*>(&base) == &message &&
           message.getString() == "$GPRMC,1*00\n" &&
           DegreeReader::coordinateToDouble("0730") == 7.5;
}

}  // namespace

int main() {
    const std::pair<const char*, bool (*)()> checks[] = {
        {"catch what the library throws", &catchesWhatTheLibraryThrows},
        {"throw what the library catches", &throwsWhatTheLibraryCatches},
        {"cast a message that the library made", &castsAMessageThatTheLibraryMade},
        {"derive from the library", &derivesFromTheLibrary},
        {"learn the version of the library", &learnsTheVersionOfTheLibrary},
    };
    int failures = 0;
    for (const auto& check : checks) {
        if (!check.second()) {
            std::cout << "A program cannot " << check.first << ".\n";
            failures++;
        }
    }
    return failures;
}
