#include "tools/io/signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

namespace vextrace::tools {

namespace {

// The handlers may use nothing but these.
std::atomic<int> firstSignal{0};
std::atomic<int> signals{0};
std::atomic<int> writeEnd{-1};
std::atomic<const char*> toRemove{nullptr};
std::atomic<int> statusOnInterrupt{STATUS_OK};
static_assert(std::atomic<int>::is_always_lock_free);

void note(int signal) {
    const int saved = errno;
    int none = 0;
    firstSignal.compare_exchange_strong(none, signal);
    ++signals;
    [[maybe_unused]] const ssize_t written = write(writeEnd, "", 1);
    errno = saved;
}

// Runs once: by then the signal does again what it does without a handler.
void removeAndEnd(int signal) {
    if (const char* path = toRemove.exchange(nullptr); path != nullptr) {
        static_cast<void>(unlink(path));
    }
    static_cast<void>(raise(signal));
}

}  // namespace

HandledSignals::HandledSignals(void (*handler)(int), int flags) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN) {
            sigaction(SIGNALS[i], &action, nullptr);
        }
    }
}

HandledSignals::~HandledSignals() {
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &before[i], nullptr);
    }
}

StopSignals::StopSignals() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw DataError(std::string("no pipe for signals: ") + std::strerror(errno));
    }
    readEnd = ends[0];
    writeEnd = ends[1];
    firstSignal = 0;
    signals = 0;
    handled.emplace(note, 0);
}

StopSignals::~StopSignals() {
    handled.reset();
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

RemoveOnSignal::RemoveOnSignal(std::string path) : file(std::move(path)) {
    toRemove = file.c_str();
    handled.emplace(removeAndEnd, static_cast<int>(SA_RESETHAND));
}

RemoveOnSignal::~RemoveOnSignal() {
    handled.reset();
    toRemove = nullptr;
}

void endQuietlyOnInterrupt() {
    struct sigaction action = {};
    action.sa_handler = [](int) { _exit(statusOnInterrupt); };
    sigaction(SIGINT, &action, nullptr);
}

void setStatusOnInterrupt(Status status) {
    statusOnInterrupt = status;
}

}  // namespace vextrace::tools
