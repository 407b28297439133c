#include "tools/io/RemoveOnSignal.h"

#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <utility>

namespace vextrace::tools {

namespace {

// The handler may use nothing but this.
std::atomic<const char*> toRemove{nullptr};

// Runs once: by then the signal does again what it does without a handler.
void removeAndEnd(int signal) {
    if (const char* path = toRemove.exchange(nullptr); path != nullptr) {
        static_cast<void>(unlink(path));
    }
    static_cast<void>(raise(signal));
}

}  // namespace

RemoveOnSignal::RemoveOnSignal(std::string path) : file(std::move(path)) {
    toRemove = file.c_str();
    struct sigaction action = {};
    action.sa_handler = removeAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN) {
            sigaction(SIGNALS[i], &action, nullptr);
        }
    }
}

RemoveOnSignal::~RemoveOnSignal() {
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &before[i], nullptr);
    }
    toRemove = nullptr;
}

}  // namespace vextrace::tools
