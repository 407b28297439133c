#include "tools/io/standardStreams.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <csignal>

#include "tools/io/TerminalLine.h"

namespace vextrace::tools {

void holdStandardStreams() {
    // Opened the wrong way round, so that a use fails as it does with a closed stream.
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) < 0) {
            static_cast<void>(open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

void keepFailingWrites() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

bool outputIsTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

void tell(std::string_view text) {
    tellLines(fmt::format("vextrace: {}\n", text));
}

void tellLines(std::string_view lines) {
    TerminalLine::erase();
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, lines.data(), lines.size());
}

}  // namespace vextrace::tools
