#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/InvalidMessageException.h"

namespace {

// The next non-empty line of a NUL-terminated text; empty when there is none. Keeps no position of
// its own, unlike strtok, so that threads may decode at the same time.
std::string_view nextPiece(const char*& text) {
    text += std::strspn(text, "\n");
    const std::string_view piece(text, std::strcspn(text, "\n"));
    text += piece.size();
    return piece;
}

}  // namespace

size_t GPSTraceMessage::getSize() const {
    size_t size = MO_GPS - MSGSIZE_LENGTH;
    for (const auto& entry : gpsStrings) {
        size += entry.second.size();
    }
    return size;
}

size_t GPSTraceMessage::writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const {
    const size_t size = GPSTraceMessage::getSize();
    MessageBase::writeToByteArray(pdest, maxlen, sync);
    for (const auto& entry : gpsStrings) {
        std::memcpy(pdest, entry.second.data(), entry.second.size());
        pdest += entry.second.size();
    }
    return size;
}

MessageBase* GPSTraceMessage::readFromByteArray(const uint8_t* psrc, size_t len) {
    // A NUL byte ends the payload; in the copy there is always one.
    const std::string copy(reinterpret_cast<const char*>(psrc), len);
    const char* payload = copy.c_str() + (len < MO_GPS ? len : size_t{MO_GPS});

    std::string_view piece = nextPiece(payload);
    if (piece.empty()) {
        throw InvalidMessageException(IM_MISC, "GPSTraceMessage: No NMEA code found.");
    }
    auto message = std::make_unique<GPSTraceMessage>();
    message->restoreHeader(psrc, len);
    message->storeSentence(piece);

    // Splitting once behind the last piece gives the same fields as splitting behind each.
    bool several = false;
    for (piece = nextPiece(payload); !piece.empty(); piece = nextPiece(payload)) {
        message->storeSentence(piece);
        several = true;
    }
    if (several) {
        message->splitNewSentences();
    }
    return message.release();
}
