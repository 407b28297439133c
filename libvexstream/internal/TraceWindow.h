#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

#include "libvexstream/ByteSource.h"

namespace vextrace {

/// The part of a trace that is held in memory, of limited size. Offsets are those in the trace.
class TraceWindow {
public:
    /// Bytes that may be held at once, from keepFrom() on.
    static constexpr size_t ROOM = size_t{864} * 1024;

    /// \param start  offset in the trace of the source's next byte
    TraceWindow(ByteSource& source, uint64_t start);

    /// How many of the \p count bytes from \p offset on are there; reads where they are not held
    /// yet. A read error counts as the end of the input here. At most ROOM bytes from keepFrom()
    /// on can be asked for.
    size_t available(uint64_t offset, size_t count) {
        return offset + count <= end() ? count : readUpTo(offset, count);
    }

    /// The byte at \p offset and those behind it; valid until available() is called again.
    const uint8_t* at(uint64_t offset) const { return buffer.get() + (offset - begin); }

    /// Behind the last byte read.
    uint64_t end() const { return begin + held; }

    /// The bytes before \p offset are not needed any more.
    void keepFrom(uint64_t offset) { kept = offset; }

    /// Whether available() may read, or answers from what is held.
    void setReading(bool allowed) { reading = allowed; }

    /// The input ended here, but may have grown since.
    void readOn() { ended = false; }

    /// Forgets the bytes from \p offset on, so that they are read again: a file that is being
    /// written may lose its end and get another.
    void forgetFrom(uint64_t offset);

    /// Whether the input ended with a read error.
    bool hasReadError() const { return readError != nullptr; }

    /// Those who ask again read on.
    /// \throws what the source threw when the input ended with a read error
    void throwReadError();

private:
    size_t readUpTo(uint64_t offset, size_t count);
    void readMore();

    ByteSource& input;
    std::unique_ptr<uint8_t[]> buffer;  // not cleared first, which takes longer than a small trace
    uint64_t begin;                     // offset of the first byte in the buffer
    size_t held = 0;                    // bytes in the buffer
    uint64_t kept;
    bool reading = true;
    bool ended = false;
    std::exception_ptr readError;
};

}  // namespace vextrace
