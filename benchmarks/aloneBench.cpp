/// \file
/// What the library alone takes for the messages of a trace: to decode them, and to build them
/// anew, the whole road of text in, numbers and bytes out. Prints seconds of processor time.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "benchmarks/operations.h"
#include "benchmarks/timing.h"

namespace {

using Sentences = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;

Bytes readFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

template <class Use>
void decodeAll(const Bytes& trace, const Use& use) {
    const uint8_t* psrc = trace.data();
    size_t len = trace.size();
    while (len > 0) {
        const DecodedMessage decoded = MessageFactory::decode(psrc, len);
        use(decoded.message.get());
        psrc += decoded.bytesTaken;
        len -= decoded.bytesTaken;
    }
}

std::vector<Sentences> sentencesOf(const Bytes& trace) {
    std::vector<Sentences> messages;
    decodeAll(trace, [&](const MessageBase* message) {
        const auto* gps = dynamic_cast<const GPSTraceMessage*>(message);
        if (gps != nullptr) {
            messages.emplace_back();
            for (const auto& [code, sentence] : gps->getSentences()) {
                messages.back().push_back(sentence);
            }
        }
    });
    return messages;
}

void runRoad(const std::vector<Sentences>& messages) {
    GPSTraceMessage::numeric_gprmc_t gprmc;
    GPSTraceMessage::numeric_gpgga_t gpgga;
    for (const Sentences& sentences : messages) {
        GPSTraceMessage message(STAMP, sentences.front());
        for (size_t i = 1; i < sentences.size(); ++i) {
            message.addRecord(sentences[i]);
        }
        message.getGPRMC(gprmc);
        message.getGPGGA(gpgga);
        bytesOf(message);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s TRACE\n", argv[0]);
        return EXIT_FAILURE;
    }
    GPSTraceMessage::registerMessage();
    const Bytes trace = readFile(argv[1]);
    const std::vector<Sentences> messages = sentencesOf(trace);
    if (messages.empty()) {
        std::fprintf(stderr, "%s: no GPS message.\n", argv[1]);
        return EXIT_FAILURE;
    }
    const std::vector<double> seconds = medianSeconds({
        [&] { decodeAll(trace, [](const MessageBase* /*message*/) {}); },
        [&] { runRoad(messages); },
    });
    std::printf("decode %.6f\nroad %.6f\n", seconds[0], seconds[1]);
    return EXIT_SUCCESS;
}
