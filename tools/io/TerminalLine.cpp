#include "tools/io/TerminalLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>

namespace vextrace::tools {

namespace {

TerminalLine* current = nullptr;

}  // namespace

TerminalLine::TerminalLine() : TerminalLine(isatty(STDERR_FILENO) != 0 ? STDERR_FILENO : -1) {}

TerminalLine::TerminalLine(int terminal) : fd(terminal) {
    current = this;
}

TerminalLine::~TerminalLine() {
    erase();
    current = nullptr;
}

void TerminalLine::erase() {
    if (current != nullptr && current->width != 0) {
        current->show("");
    }
}

void TerminalLine::forget() {
    current = nullptr;
}

// Blanks erase what the text leaves of the line before it; every terminal knows them.
void TerminalLine::show(std::string text) {
    if (fd < 0) {
        return;
    }
    text.resize(text.size() < columns() ? text.size() : columns());
    const std::string rest(width > text.size() ? width - text.size() : 0, ' ');
    const std::string line = '\r' + text + rest + (text.empty() ? "\r" : "");
    [[maybe_unused]] const ssize_t written = write(fd, line.data(), line.size());
    width = text.size();
}

// The last one is left free: behind it some terminals begin a new line.
size_t TerminalLine::columns() const {
    winsize size = {};
    const bool isKnown = ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return isKnown ? size.ws_col - 1U : SIZE_MAX;
}

}  // namespace vextrace::tools
