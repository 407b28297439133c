/// \file
/// A trace message of another type: what a temperature sensor of the logger reported.
#pragma once

#include <iomanip>
#include <memory>
#include <sstream>
#include <string>

#include "libvextrace/MessageBase.h"
#include "libvextrace/MessageFactory.h"
#include "libvexutil/datablock.h"

/// The temperature that one sensor measured. Payload: the sensor's number and the temperature in
/// tenths of a kelvin, 16 bits each, big-endian.
class TemperatureMessage : public MessageBase {
public:
    TemperatureMessage(timeStamp_t timeStamp, uint16_t number, uint16_t temperature)
        : MessageBase(MSGID_TEMPERATURE, timeStamp), sensor(number), decikelvin(temperature) {}

    uint16_t getSensor() const { return sensor; }
    uint16_t getDecikelvin() const { return decikelvin; }

    static bool registerMessage() {
        return MessageFactory::registerReader(MSGID_TEMPERATURE, &readFromByteArray);
    }

    TemperatureMessage* clone() const override { return new TemperatureMessage(*this); }

    // The base counts and writes the header, and refuses what does not fit before a byte is
    // written.
    size_t getSize() const override { return MessageBase::getSize() + PAYLOAD_SIZE; }

    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override {
        const size_t size = MessageBase::writeToByteArray(pdest, maxlen, sync);
        uint16ToByteArray(sensor, pdest);
        uint16ToByteArray(decikelvin, pdest + 2);
        pdest += PAYLOAD_SIZE;
        return size;
    }

    bool operator==(const MessageBase& msg) const override {
        const auto* other = dynamic_cast<const TemperatureMessage*>(&msg);
        return other != nullptr && sensor == other->sensor && decikelvin == other->decikelvin;
    }

    // Without this one, C++20 finds two ways to compare two of these messages.
    bool operator==(const TemperatureMessage& msg) const {
        return operator==(static_cast<const MessageBase&>(msg));
    }

    std::ostream& print(std::ostream& os) const override { return os << toString(); }

    std::string toString() const override {
        std::ostringstream os;
        os << std::hex << std::setfill('0') << static_cast<const MessageBase&>(*this) << std::dec
           << "  TEMPERATURE | sensor " << sensor << ' ' << decikelvin / 10 << '.'
           << decikelvin % 10 << " K";
        return os.str();
    }

    std::string getSourceChannel() const override { return "TEMPERATURE"; }

    uint64_t getSourceChannelID() const override {
        return MessageBase::getSourceChannelID(BUSID_LOGGER_INTERN, static_cast<uint8_t>(sensor),
                                               mbnr);
    }

private:
    static constexpr size_t PAYLOAD_SIZE = 4;

    // The factory has checked the header; only the reader knows how long its payload is.
    static MessageBase* readFromByteArray(const uint8_t* psrc, size_t len) {
        if (len != MO_BASE_DERIVED + PAYLOAD_SIZE) {
            throw InvalidMessageException(IM_INVALID_LEN,
                                          "TemperatureMessage: The payload is not 4 bytes long.",
                                          static_cast<uint16_t>(len - MO_BASE_DERIVED));
        }
        const uint8_t* payload = psrc + MO_BASE_DERIVED;
        auto message = std::make_unique<TemperatureMessage>(0, byteArrayToUint16(payload),
                                                            byteArrayToUint16(payload + 2));
        message->restoreHeader(psrc, len);  // time stamp and reserved word
        return message.release();
    }

    uint16_t sensor;
    uint16_t decikelvin;
};
