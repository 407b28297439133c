#pragma once

#include <array>
#include <csignal>
#include <string>

namespace vextrace::tools {

/// While it lives, SIGINT, SIGTERM and SIGHUP remove a file before they end the program as they do
/// without it. A signal that is ignored stays so. There may be one at a time.
class RemoveOnSignal {
public:
    explicit RemoveOnSignal(std::string path);
    RemoveOnSignal(const RemoveOnSignal&) = delete;
    RemoveOnSignal& operator=(const RemoveOnSignal&) = delete;
    ~RemoveOnSignal();

private:
    static constexpr std::array<int, 3> SIGNALS = {SIGINT, SIGTERM, SIGHUP};

    std::string file;
    std::array<struct sigaction, SIGNALS.size()> before = {};
};

}  // namespace vextrace::tools
