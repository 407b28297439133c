#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <span>
#include <vector>

#include "libvexstream/visibility.h"

namespace vextrace {

/// Where a TraceReader takes its bytes from, one behind the other.
class VEXSTREAM_EXPORT ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource(ByteSource&&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    ByteSource& operator=(ByteSource&&) = delete;
    virtual ~ByteSource();

    /// Reads what is there; may wait where nothing is.
    ///
    /// \param dest  room for \p room bytes
    /// \param room  more than 0
    /// \return how many bytes were read, at most \p room; 0 at the end, behind which more may be
    ///         read later where the source grows
    /// \throws what tells the caller why it cannot be read on; the reader gives out what was read
    ///         before, and passes it on then
    virtual size_t read(uint8_t* dest, size_t room) = 0;

    /// Goes back over the last \p count bytes that were read, so that they are read again.
    /// \return false where the source cannot; nothing has changed then
    virtual bool goBack(size_t count);

    /// Passes over bytes, so that the next read() gives those behind them.
    /// \return how many were passed over: less than \p count at the end alone
    /// \throws as read() does
    virtual uint64_t skip(uint64_t count);
};

/// Bytes in memory.
class VEXSTREAM_EXPORT MemorySource : public ByteSource {
public:
    /// \param bytes  must stay as they are while the source is used
    explicit MemorySource(std::span<const uint8_t> bytes) : all(bytes) {}

    size_t read(uint8_t* dest, size_t room) override;
    bool goBack(size_t count) override;
    uint64_t skip(uint64_t count) override;

private:
    std::span<const uint8_t> all;
    size_t position = 0;
};

/// The bytes of a stream, from its position on.
class VEXSTREAM_EXPORT StreamSource : public ByteSource {
public:
    /// \param stream  opened in binary mode; must outlive the source
    explicit StreamSource(std::istream& stream) : input(stream) {}

    /// \throws std::ios_base::failure where the stream goes bad
    size_t read(uint8_t* dest, size_t room) override;

private:
    std::istream& input;
};

/// Bytes that are fed as they arrive. A reader of it is made with TraceReader::setGrowing(), and
/// answers END whenever it wants more.
///
///     source.feed(bytes);
///     for (TraceItem item = trace.next(); item.kind != TraceItem::Kind::END; item = trace.next())
class VEXSTREAM_EXPORT FedSource : public ByteSource {
public:
    /// \param bytes  are copied
    void feed(std::span<const uint8_t> bytes);

    size_t read(uint8_t* dest, size_t room) override;

private:
    std::vector<uint8_t> waiting;
    size_t taken = 0;  // of what waits
};

}  // namespace vextrace
