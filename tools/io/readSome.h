#pragma once

#include <sys/types.h>

#include <cstddef>

namespace vextrace::tools {

/// Reads what is there; waits where nothing is, also where the file was opened not to wait, as a
/// pipe may be that was made by another program.
/// \return how many bytes, 0 at the end; or -1 with the reason in errno
ssize_t readSome(int fd, void* dest, size_t room);

}  // namespace vextrace::tools
