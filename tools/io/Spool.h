#pragma once

#include <cstdint>
#include <string>

#include "libvexstream/ByteSource.h"

namespace vextrace::tools {

/// Passes the bytes of a source on that can be read once, such as a pipe, and keeps them in a
/// temporary file that has no name, so that they can be read again.
class Spool : public ByteSource {
public:
    /// \param source  must outlive the first reading
    /// \param name    of it, for people
    /// \throws DataError when there is no temporary file, as read() does when there is no room in
    /// it
    Spool(ByteSource& source, std::string name);
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;
    ~Spool() override;

    /// From now on the bytes that were read are read again, from the first one on.
    void rewind();

    size_t read(uint8_t* dest, size_t room) override;
    bool goBack(size_t count) override;

private:
    size_t readKept(uint8_t* dest, size_t room);
    [[noreturn]] void fail() const;

    ByteSource* input;
    std::string inputName;
    std::string folder;
    int kept = -1;
    uint64_t position = 0;
};

}  // namespace vextrace::tools
