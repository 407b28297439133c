// A program with a message type of its own: the message goes to bytes and comes back from them.
#include <iostream>

#include "TemperatureMessage.h"
#include "libvextrace/serialise.h"

int main() {
    const TemperatureMessage message(10, 3, 2931);
    const std::vector<uint8_t> bytes = vextrace::serialise(message);

    TemperatureMessage::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    if (!decoded.message || !(*decoded.message == message)) {
        return 1;
    }
    decoded.message->print(std::cout) << '\n';
}
