/// \file
/// Traces for tests, and what a reader makes of them.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "libvexutil/datablock.h"

/// Compared by its bytes, printed in hexadecimal.
struct TraceBytes : std::vector<uint8_t> {
    using vector::vector;

    friend void PrintTo(const TraceBytes& bytes, std::ostream* os) {
        for (const uint8_t byte : bytes) {
            *os << "0123456789abcdef"[byte >> 4] << "0123456789abcdef"[byte & 15];
        }
    }
};

/// A file in memory that lasts as long as the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const TraceBytes& content = {}) {
        EXPECT_GE(fd, 0);
        append(content);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { close(fd); }

    void append(const TraceBytes& content) const {
        EXPECT_EQ(write(fd, content.data(), content.size()), static_cast<ssize_t>(content.size()));
    }
    void cut(size_t length) const {
        EXPECT_EQ(ftruncate(fd, static_cast<off_t>(length)), 0);
        lseek(fd, 0, SEEK_END);
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(fd); }
    int descriptor() const { return fd; }

    /// All that it holds; it is empty then.
    std::string take() const {
        std::string content(static_cast<size_t>(lseek(fd, 0, SEEK_END)), '\0');
        EXPECT_EQ(pread(fd, content.data(), content.size(), 0),
                  static_cast<ssize_t>(content.size()));
        cut(0);
        return content;
    }

private:
    int fd = memfd_create("trace", 0);
};

/// A serialised message of any type.
inline TraceBytes messageOf(uint16_t id, uint64_t stamp, std::string_view payload) {
    TraceBytes bytes(14);
    uint16ToByteArray(static_cast<uint16_t>(12 + payload.size()), bytes.data());
    uint16ToByteArray(id, bytes.data() + 2);
    uint64ToByteArray(stamp, bytes.data() + 6);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

inline TraceBytes joined(const std::vector<TraceBytes>& parts) {
    TraceBytes bytes;
    for (const TraceBytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

/// An item of a reader, with its bytes copied.
struct ReadItem {
    vextrace::TraceItem::Kind kind;
    uint64_t offset;
    uint64_t length;
    TraceBytes bytes;
    msgid_t id;
    std::string payload;  ///< of a GPS message, as it was decoded
    std::string reason;
};

inline ReadItem copied(const vextrace::TraceItem& item) {
    ReadItem result{item.kind, item.offset, item.length, {item.bytes.begin(), item.bytes.end()},
                    item.id,   "",          item.reason};
    if (item.gps != nullptr) {
        for (const std::string_view sentence : item.gps->getSentences()) {
            result.payload += sentence;
        }
    }
    return result;
}

/// All items up to the end.
inline std::vector<ReadItem> readAll(vextrace::TraceReader& reader) {
    std::vector<ReadItem> items;
    for (;;) {
        const vextrace::TraceItem item = reader.next();
        if (item.kind == vextrace::TraceItem::Kind::END) {
            return items;
        }
        items.push_back(copied(item));
    }
}

inline std::vector<ReadItem> readTrace(const TraceBytes& trace) {
    vextrace::MemorySource source(trace);
    vextrace::TraceReader reader(source);
    return readAll(reader);
}
