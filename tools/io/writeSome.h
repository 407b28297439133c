#pragma once

#include <sys/types.h>

#include <cstddef>

namespace vextrace::tools {

/// Writes as many of the bytes as go at once; waits for a reader that is slow.
/// \param count  more than 0
/// \return how many, at least 1; or -1 with the reason in errno, of which EINTR says to try again
ssize_t writeSome(int fd, const void* bytes, size_t count);

}  // namespace vextrace::tools
