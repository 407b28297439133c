#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vextrace::tools {

// Reading, writing and locking files that are open, whatever interrupts it.

/// Reads what is there; waits where nothing is, also where the file was opened not to wait, as a
/// pipe may be that was made by another program.
/// \return how many bytes, 0 at the end; or -1 with the reason in errno
ssize_t readSome(int fd, void* dest, size_t room);

/// Reads bytes of a file from a place on, wherever else it is read and written.
/// \return how many, 0 at the end of the file; or -1 with the reason in errno
ssize_t readAt(int fd, void* dest, size_t room, uint64_t offset);

/// Writes what goes at once, which is less than all at the end of a disk; waits for a reader that
/// is slow. A second signal that is waited for ends the patience.
/// \param bytes  not empty
/// \return how many bytes went out; for 0 errno has the reason
size_t writeSome(int fd, std::string_view bytes);

/// Writes all, likewise.
/// \return how many bytes went out; where that is not all, errno has the reason
size_t writeAll(int fd, std::string_view bytes);

/// Locks an open file against other recorders, as long as it is open. Not every file system has
/// locks; without them there is no harm in going on.
/// \return false where another program has it locked
bool lockFile(int descriptor);

/// Lets others lock it while it is open.
void unlockFile(int descriptor);

/// Whether another program records to the file that exists under this name.
bool isRecorded(const std::string& path);

}  // namespace vextrace::tools
