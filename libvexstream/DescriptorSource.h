#pragma once

#include "libvexstream/ByteSource.h"

namespace vextrace {

/// The bytes of a file descriptor: a file, a pipe, a socket.
class VEXSTREAM_EXPORT DescriptorSource : public ByteSource {
public:
    /// \param descriptor  open for reading, and waiting for bytes where none are there; stays the
    ///                    caller's, who closes it when the source is used no more
    explicit DescriptorSource(int descriptor) : fd(descriptor) {}

    /// \throws std::system_error with the reason
    size_t read(uint8_t* dest, size_t room) override;

    /// In files without reading them. \throws as read() does
    uint64_t skip(uint64_t count) override;

private:
    int fd;
};

}  // namespace vextrace
