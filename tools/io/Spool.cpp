#include "tools/io/Spool.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/io/descriptors.h"
#include "tools/io/errors.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

Spool::Spool(ByteSource& source, std::string name) : input(&source), inputName(std::move(name)) {
    std::error_code none;
    folder = std::filesystem::temp_directory_path(none).string();
    std::string path = folder + "/vextrace-XXXXXX";
    kept = mkstemp(path.data());
    if (kept < 0 || unlink(path.c_str()) != 0) {
        fail();
    }
}

Spool::~Spool() {
    close(kept);
}

void Spool::rewind() {
    input = nullptr;
    position = 0;
}

size_t Spool::read(uint8_t* dest, size_t room) {
    if (input == nullptr) {
        return readKept(dest, room);
    }
    const size_t count = input->read(dest, room);
    if (writeAll(kept, {reinterpret_cast<const char*>(dest), count}) != count) {
        fail();
    }
    return count;
}

bool Spool::goBack(size_t count) {
    if (input != nullptr) {
        return false;
    }
    position -= count;
    return true;
}

size_t Spool::readKept(uint8_t* dest, size_t room) {
    const ssize_t count = readAt(kept, dest, room, position);
    if (count < 0) {
        fail();
    }
    position += static_cast<uint64_t>(count);
    return static_cast<size_t>(count);
}

void Spool::fail() const {
    throw DataError(fmt::format("{}: cannot be kept in a temporary file in {}: {}", inputName,
                                shownName(folder), std::strerror(errno)));
}

}  // namespace vextrace::tools
