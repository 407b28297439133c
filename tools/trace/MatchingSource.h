#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "libvexstream/ByteSource.h"

namespace vextrace::tools {

/// Another source, of whose next bytes can be asked whether they are the expected ones.
class MatchingSource : public ByteSource {
public:
    /// \param other  must outlive this one
    explicit MatchingSource(ByteSource& other) : source(other) {}

    /// Passes over these bytes where they are the next ones; otherwise they stay the next ones.
    /// \throws as the other source does
    bool passOver(std::span<const uint8_t> expected);

    /// How many bytes were passed over.
    uint64_t passed() const { return passedBytes; }

    size_t read(uint8_t* dest, size_t room) override;

private:
    bool holds(size_t count);

    ByteSource& source;
    std::vector<uint8_t> buffer;
    size_t begin = 0;  // of the next bytes, in the buffer
    size_t end = 0;
    uint64_t passedBytes = 0;
};

}  // namespace vextrace::tools
