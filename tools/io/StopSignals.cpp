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
std::atomic<int> first{0};
std::atomic<int> number{0};
std::atomic<int> writeEnd{-1};

void note(int signal) {
    const int saved = errno;
    int none = 0;
    first.compare_exchange_strong(none, signal);
    ++number;
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
    first = 0;
    number = 0;
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
    first = 0;
    number = 0;
    close(writeEnd.exchange(-1));
    close(readEnd);
}

int StopSignals::caught() {
    return first;
}

const char* StopSignals::nameOf(int signal) {
    return signal == SIGINT ? "SIGINT" : signal == SIGTERM ? "SIGTERM" : "SIGHUP";
}

int StopSignals::count() {
    return number;
}

}  // namespace vextrace::tools
