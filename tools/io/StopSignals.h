#pragma once

#include <array>
#include <csignal>

namespace vextrace::tools {

/// While it lives, SIGINT, SIGTERM and SIGHUP end nothing, but can be waited for and asked for. A
/// signal that is ignored stays so. There may be one at a time.
class StopSignals {
public:
    StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals();

    /// Becomes readable when a signal has come; for poll() alone.
    int descriptor() const { return readEnd; }

    /// The first of the signals that came; 0 while none has.
    static int caught();

    /// The name of one of the signals.
    static const char* nameOf(int signal);

    /// How many came.
    static int count();

private:
    static constexpr std::array<int, 3> SIGNALS = {SIGINT, SIGTERM, SIGHUP};

    int readEnd = -1;
    std::array<struct sigaction, SIGNALS.size()> before = {};
};

}  // namespace vextrace::tools
