#include "benchmarks/PlainGps.h"

#include <memory>
#include <sstream>

#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/MessageFactory.h"

namespace {

constexpr msgid_t PLAIN_ID = static_cast<msgid_t>(1000);

}  // namespace

PlainGps::PlainGps() : MessageBase(PLAIN_ID, 0) {
    model.id = PLAIN_ID;
}

PlainGps::PlainGps(timeStamp_t timeStamp, const std::string& record)
    : MessageBase(PLAIN_ID, timeStamp), model(timeStamp, record) {
    model.id = PLAIN_ID;
}

bool PlainGps::registerMessage() {
    return MessageFactory::registerReader(PLAIN_ID, &readFromByteArray);
}

PlainGps* PlainGps::clone() const {
    return new PlainGps(*this);
}

size_t PlainGps::writeToByteArray(uint8_t*& pdest, size_t maxlen, bool /*sync*/) const {
    const size_t size = model.getSize();
    if (size > 0xFFFF || maxlen < size + MSGSIZE_LENGTH) {
        throw InvalidMessageException(IM_INVALID_LEN, "PlainGps: No room for the message.");
    }
    model.write(pdest);
    return size;
}

size_t PlainGps::getSize() const {
    return model.getSize();
}

MessageBase* PlainGps::readFromByteArray(const uint8_t* psrc, size_t len) {
    std::unique_ptr<PlainGps> message(new PlainGps);
    if (!message->model.readFrom(psrc, len)) {
        throw InvalidMessageException(IM_MISC, "PlainGps: No sentence found.");
    }
    message->stamp = message->model.stamp;
    message->headerReserved = message->model.reserved;
    return message.release();
}

bool PlainGps::operator==(const MessageBase& msg) const {
    const auto* other = dynamic_cast<const PlainGps*>(&msg);
    return other != nullptr && model.equals(other->model);
}

std::ostream& PlainGps::print(std::ostream& os) const {
    model.print(os);
    return os;
}

std::string PlainGps::toString() const {
    std::ostringstream os;
    print(os);
    return os.str();
}

std::string PlainGps::getSourceChannel() const {
    return "GPS";
}

uint64_t PlainGps::getSourceChannelID() const {
    return model.getSourceChannelID();
}
