#include "libvexstream/GpsView.h"

#include <utility>

#include "libvexstream/internal/soundness.h"
#include "libvextrace/MessageFactory.h"
#include "libvexutil/datablock.h"

namespace vextrace {

namespace {

// The library makes the talker of such a sentence GP.
bool hasForeignTalker(std::string_view line) {
    return line[0] == '$' && line[1] == 'G' && line[2] != 'P';
}

// Why the bytes are not those of a GPS message.
std::optional<InvalidMessageException> refusalOf(std::span<const uint8_t> message) {
    constexpr size_t SIZE_LENGTH = MessageBase::MSGSIZE_LENGTH;
    if (message.size() < MessageBase::MO_BASE_DERIVED ||
        byteArrayToUint16(message.data() + MessageBase::MO_MSGSIZE) + SIZE_LENGTH !=
            message.size()) {
        return InvalidMessageException(IM_INVALID_LEN, "GpsView: The size field says otherwise.",
                                       static_cast<uint16_t>(message.size()));
    }
    if (const uint16_t id = byteArrayToUint16(message.data() + MessageBase::MO_MSGID);
        id != MSGID_GPS) {
        return InvalidMessageException(IM_INVALID_MSGID, "GpsView: No GPS message.", id);
    }
    return std::nullopt;
}

// Whoever uses a view need not have registered the reader.
DecodedMessage decode(std::span<const uint8_t> message) {
    GPSTraceMessage::registerMessage();
    return MessageFactory::decode(message.data(), message.size());
}

// The one reader of this id makes nothing else.
std::unique_ptr<GPSTraceMessage> gpsOf(std::unique_ptr<MessageBase> message) {
    return std::unique_ptr<GPSTraceMessage>(static_cast<GPSTraceMessage*>(message.release()));
}

}  // namespace

GpsView::GpsView(const GPSTraceMessage& message) {
    view(message);
}

bool GpsView::readInPlace(std::span<const uint8_t> message) {
    stamp = 0;
    headerReserved = 0;
    sentences.clear();
    bytes = {};
    holder = nullptr;
    decoded.reset();
    const auto take = [this](std::string_view line) {
        sentences.push_back(line);
        return !hasForeignTalker(line);
    };
    if (refusalOf(message) || !readCanonical(message.subspan(MessageBase::MO_BASE_DERIVED), take)) {
        sentences.clear();
        return false;
    }
    stamp = byteArrayToUint64(message.data() + MessageBase::MO_TIMESTAMP);
    headerReserved = byteArrayToUint16(message.data() + MessageBase::MO_HDRRESERVED);
    bytes = message;
    return true;
}

std::optional<InvalidMessageException> GpsView::read(std::span<const uint8_t> message) {
    if (readInPlace(message)) {
        return std::nullopt;
    }
    if (std::optional<InvalidMessageException> refusal = refusalOf(message)) {
        return refusal;
    }
    DecodedMessage result = decode(message);
    if (!result.error) {
        decoded = gpsOf(std::move(result.message));
        view(*decoded);
    }
    return result.error;
}

void GpsView::view(const GPSTraceMessage& message) {
    stamp = message.getTimeStamp();
    headerReserved = message.getHeaderReserved();
    holder = &message;
    for (const auto& [code, sentence] : message.getSentences()) {
        sentences.emplace_back(sentence);
    }
}

std::string_view GpsView::getSentence(std::string_view code) const {
    for (const std::string_view sentence : sentences) {
        const std::string_view found = codeOf(sentence);
        // Most codes differ in their last letters, which takes no call to see.
        if (!code.empty() && found.back() == code.back() && found == code) {
            return sentence;
        }
    }
    return {};
}

bool GpsView::hasNmeaDataType(GPSTraceMessage::nmeaDataType_t type) const {
    switch (type) {
        case GPSTraceMessage::NMEA_DATA_GPRMC:
            return !getSentence(GPSTraceMessage::GPRMC).empty();
        case GPSTraceMessage::NMEA_DATA_GPGGA:
            return !getSentence(GPSTraceMessage::GPGGA).empty();
    }
    return false;
}

GPSTraceMessage GpsView::message() const {
    if (holder != nullptr) {
        return *holder;
    }
    if (bytes.empty()) {
        return {};
    }
    return *gpsOf(decode(bytes).message);
}

}  // namespace vextrace
