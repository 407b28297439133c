#pragma once

#include <array>
#include <csignal>
#include <optional>
#include <string>

#include "tools/io/errors.h"

namespace vextrace::tools {

/// While it lives, SIGINT, SIGTERM and SIGHUP are handled another way. A signal that is ignored
/// stays so.
class HandledSignals {
public:
    /// \param flags  as sigaction() takes them
    HandledSignals(void (*handler)(int), int flags);
    HandledSignals(const HandledSignals&) = delete;
    HandledSignals& operator=(const HandledSignals&) = delete;
    ~HandledSignals();

private:
    static constexpr std::array<int, 3> SIGNALS = {SIGINT, SIGTERM, SIGHUP};

    std::array<struct sigaction, SIGNALS.size()> before = {};
};

/// While it lives, these signals end nothing, but can be waited for and asked for. There may be one
/// at a time.
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
    int readEnd = -1;
    std::optional<HandledSignals> handled;
};

/// While it lives, these signals remove a file before they end the program as they do without it.
/// There may be one at a time.
class RemoveOnSignal {
public:
    explicit RemoveOnSignal(std::string path);
    RemoveOnSignal(const RemoveOnSignal&) = delete;
    RemoveOnSignal& operator=(const RemoveOnSignal&) = delete;
    ~RemoveOnSignal();

private:
    std::string file;
    std::optional<HandledSignals> handled;
};

/// From now on SIGINT ends the program at once and quietly, with status 0 or the one that was set.
/// For commands that never end by themselves.
void endQuietlyOnInterrupt();
void setStatusOnInterrupt(Status status);

}  // namespace vextrace::tools
