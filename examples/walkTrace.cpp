/// \file
/// Walks a trace: reads message after message, prints each, counts the sentences by their codes.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"

namespace {

// Reads one message, and not a byte more; false where there is none.
bool readMessage(std::istream& trace, std::vector<uint8_t>& bytes) {
    bytes.clear();
    vextrace::FramedMessage front = MessageFactory::frame(bytes.data(), bytes.size());
    while (front.framing == vextrace::FRAMING_INCOMPLETE) {
        const size_t before = bytes.size();
        bytes.resize(front.length);
        trace.read(reinterpret_cast<char*>(bytes.data() + before),
                   static_cast<std::streamsize>(front.length - before));
        bytes.resize(before + static_cast<size_t>(trace.gcount()));
        if (bytes.size() < front.length) {
            return false;
        }
        front = MessageFactory::frame(bytes.data(), bytes.size());
    }
    return front.framing == vextrace::FRAMING_COMPLETE;
}

// Complains and gives the status of a program that failed.
int failed(const char* what, const char* name) {
    std::cerr << "walkTrace: " << what << ' ' << name << '\n';
    return 1;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::cerr << "Usage: walkTrace TRACE\n";
        return 2;
    }
    GPSTraceMessage::registerMessage();
    std::ifstream trace(argv[1], std::ios::binary);
    if (!trace) {
        return failed("cannot open", argv[1]);
    }
    if (std::filesystem::is_directory(argv[1])) {
        return failed("cannot read", argv[1]);  // not every standard library says so itself
    }
    std::map<std::string, size_t> counts;
    std::vector<uint8_t> bytes;
    while (readMessage(trace, bytes)) {
        const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
        if (decoded.error) {
            std::cerr << decoded.error->what() << '\n';  // say, a type that nobody registered
            continue;
        }
        decoded.message->print(std::cout) << '\n';
        if (const auto* gps = dynamic_cast<const GPSTraceMessage*>(decoded.message.get())) {
            for (const auto& [code, sentence] : gps->getSentences()) {
                ++counts[code];
            }
        }
    }
    for (const auto& [code, count] : counts) {
        std::cout << code << ' ' << count << '\n';
    }
    if (trace.bad()) {
        return failed("cannot read", argv[1]);
    }
    return bytes.empty() ? 0 : failed("no whole message at the end of", argv[1]);
}
