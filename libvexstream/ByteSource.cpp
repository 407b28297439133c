#include "libvexstream/ByteSource.h"

#include <algorithm>
#include <array>

namespace vextrace {

ByteSource::~ByteSource() = default;

bool ByteSource::goBack(size_t /*count*/) {
    return false;
}

uint64_t ByteSource::skip(uint64_t count) {
    std::array<uint8_t, size_t{16} * 1024> passed;
    uint64_t done = 0;
    while (done < count) {
        const size_t wanted = std::min<uint64_t>(passed.size(), count - done);
        const size_t got = read(passed.data(), wanted);
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

size_t MemorySource::read(uint8_t* dest, size_t room) {
    const size_t count = std::min(room, all.size() - position);
    std::copy_n(all.data() + position, count, dest);
    position += count;
    return count;
}

bool MemorySource::goBack(size_t count) {
    position -= count;
    return true;
}

uint64_t MemorySource::skip(uint64_t count) {
    const size_t passed = std::min<uint64_t>(count, all.size() - position);
    position += passed;
    return passed;
}

size_t StreamSource::read(uint8_t* dest, size_t room) {
    if (input.eof()) {
        input.clear(input.rdstate() & ~(std::ios_base::eofbit | std::ios_base::failbit));
    }
    input.read(reinterpret_cast<char*>(dest), static_cast<std::streamsize>(room));
    if (input.bad()) {
        throw std::ios_base::failure("the stream of a trace cannot be read on");
    }
    return static_cast<size_t>(input.gcount());
}

void FedSource::feed(std::span<const uint8_t> bytes) {
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(taken));
    taken = 0;
    waiting.insert(waiting.end(), bytes.begin(), bytes.end());
}

size_t FedSource::read(uint8_t* dest, size_t room) {
    const size_t count = std::min(room, waiting.size() - taken);
    std::copy_n(waiting.data() + taken, count, dest);
    taken += count;
    return count;
}

}  // namespace vextrace
