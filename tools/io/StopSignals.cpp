#include "tools/io/StopSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

#include "tools/io/errors.h"

namespace vextrace::tools {

namespace {

// The handler may use nothing but these.
std::atomic<int> firstSignal{0};
std::atomic<int> signals{0};
std::atomic<int> writeEnd{-1};

void note(int signal) {
    const int saved = errno;
    int none = 0;
    firstSignal.compare_exchange_strong(none, signal);
    ++signals;
    [[maybe_unused]] const ssize_t written = write(writeEnd, "", 1);
    errno = saved;
}

}  // namespace

StopSignals::StopSignals() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw DataError(std::string("no pipe for signals: ") + std::strerror(errno));
    }
    readEnd = ends[0];
    writeEnd = ends[1];
    firstSignal = 0;
    signals = 0;
    struct sigaction noting = {};
    noting.sa_handler = note;
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN) {
            sigaction(SIGNALS[i], &noting, nullptr);
        }
    }
}

StopSignals::~StopSignals() {
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &before[i], nullptr);
    }
    firstSignal = 0;
    signals = 0;
    close(writeEnd.exchange(-1));
    close(readEnd);
}

int StopSignals::caught() {
    return firstSignal;
}

const char* StopSignals::nameOf(int signal) {
    return signal == SIGINT ? "SIGINT" : signal == SIGTERM ? "SIGTERM" : "SIGHUP";
}

int StopSignals::count() {
    return signals;
}

}  // namespace vextrace::tools
