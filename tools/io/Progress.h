#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/io/TerminalLine.h"

namespace vextrace::tools {

/// A line on standard error that tells how far the work is: per cent, MB/s, time left. It is there
/// when standard error is a terminal and the work has lasted longer than a second, and is erased
/// at the end. There may be one at a time.
class Progress {
public:
    using Clock = std::chrono::steady_clock;

    /// \param bytes  to work through; nothing where nobody knows
    explicit Progress(std::optional<uint64_t> bytes);

    /// For tests: writes to the terminal \p where, and asks \p time for the time.
    Progress(std::optional<uint64_t> bytes, int where, Clock::time_point (*time)());

    /// Tells how many bytes are done. Cheap, for every message.
    void update(uint64_t done) {
        if (done >= nextLook) {
            look(done);
        }
    }

private:
    void look(uint64_t done);

    std::optional<uint64_t> total;
    TerminalLine line;
    Clock::time_point (*now)();
    Clock::time_point begin;
    Clock::time_point lastShown;
    uint64_t nextLook = 0;
};

/// "43 %, 125.0 MB/s, 0:12 left"; without a total "500 MB, 125.0 MB/s". MB are 10^6 bytes.
std::string progressText(uint64_t done, std::optional<uint64_t> total, double seconds);

}  // namespace vextrace::tools
