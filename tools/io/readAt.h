#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace vextrace::tools {

/// Reads bytes of a file from a place on, wherever else it is read and written.
/// \return how many, 0 at the end of the file; or -1 with the reason in errno
ssize_t readAt(int fd, void* dest, size_t room, uint64_t offset);

}  // namespace vextrace::tools
