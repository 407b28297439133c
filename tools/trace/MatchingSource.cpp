#include "tools/trace/MatchingSource.h"

#include <algorithm>
#include <cstring>

namespace vextrace::tools {

namespace {

constexpr size_t AT_ONCE = size_t{128} * 1024;

}  // namespace

bool MatchingSource::passOver(std::span<const uint8_t> expected) {
    if (!holds(expected.size()) ||
        std::memcmp(buffer.data() + begin, expected.data(), expected.size()) != 0) {
        return false;
    }
    begin += expected.size();
    passedBytes += expected.size();
    return true;
}

// Whether so many bytes are there; reads until they are.
bool MatchingSource::holds(size_t count) {
    if (end - begin >= count) {
        return true;
    }
    std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(begin),
              buffer.begin() + static_cast<std::ptrdiff_t>(end), buffer.begin());
    end -= begin;
    begin = 0;
    buffer.resize(std::max({buffer.size(), AT_ONCE, count}));
    while (end < count) {
        const size_t got = source.read(buffer.data() + end, buffer.size() - end);
        if (got == 0) {
            return false;
        }
        end += got;
    }
    return true;
}

size_t MatchingSource::read(uint8_t* dest, size_t room) {
    const size_t count = std::min(room, end - begin);
    if (count == 0) {
        return source.read(dest, room);
    }
    std::copy_n(buffer.data() + begin, count, dest);
    begin += count;
    return count;
}

}  // namespace vextrace::tools
