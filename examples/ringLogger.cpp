/// \file
/// A logger that remembers: keeps the newest messages of a receiver in a ring of fixed size, and
/// writes them as a trace when the receiver falls silent.
#include <fstream>
#include <iostream>

#include "libvexstream/EpochBuilder.h"
#include "libvexstream/Framer.h"

using namespace vextrace;

// Whole messages; the oldest make room for new ones. Positions count from the first byte ever
// added.
struct Ring {
    void add(const std::vector<uint8_t>& messages) {
        for (size_t i = 0; i < messages.size();) {
            const size_t length = lengthOf(messages[i], messages[i + 1]);
            while (end + length - begin > bytes.size()) {
                begin += lengthOf(at(begin), at(begin + 1));
            }
            for (const size_t behind = i + length; i < behind; ++i) {
                at(end++) = messages[i];
            }
        }
    }
    static size_t lengthOf(uint8_t high, uint8_t low) { return 2 + size_t{256} * high + low; }
    uint8_t& at(uint64_t position) { return bytes[position % bytes.size()]; }

    std::vector<uint8_t> bytes;  // room for one message of any length, or for more
    uint64_t begin = 0;
    uint64_t end = 0;
};

int main(int argc, char* argv[]) {
    const size_t room = argc == 3 ? std::strtoul(argv[1], nullptr, 10) : 0;
    if (room < 65537) {
        std::cerr << "Usage: ringLogger BYTES TRACE <RECEIVER, BYTES being 65537 or more\n";
        return 2;
    }
    Ring ring{std::vector<uint8_t>(room)};
    Framer framer;
    EpochBuilder epochs(StampSource::SENTENCES, {});
    const auto record = [&] {
        while (const auto sentence = framer.next()) {
            ring.add(epochs.add(sentence->text, 0).bytes);
        }
    };
    for (char bytes[4096]; std::cin.read(bytes, sizeof bytes), std::cin.gcount() > 0;) {
        framer.feed({bytes, static_cast<size_t>(std::cin.gcount())});
        record();
    }
    framer.finish();
    record();
    ring.add(epochs.take().bytes);
    std::ofstream trace(argv[2], std::ios::binary);
    for (; ring.begin < ring.end; ++ring.begin) {
        trace.put(static_cast<char>(ring.at(ring.begin)));
    }
    return trace.flush() ? 0 : 1;
}
