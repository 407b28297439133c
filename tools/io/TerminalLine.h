#pragma once

#include <cstddef>
#include <string>

namespace vextrace::tools {

/// A line on a terminal that is written over, and erased at the end. There may be one at a time.
class TerminalLine {
public:
    /// On standard error where that is a terminal; else every call does nothing.
    TerminalLine();

    /// \param terminal  to write to; -1 for none
    explicit TerminalLine(int terminal);

    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;
    ~TerminalLine();

    bool isShown() const { return fd >= 0; }

    /// \param text  printable ASCII; what the terminal has no columns for is left out
    void show(std::string text);

    /// Erases the line where there is one, before something else is written to the terminal.
    static void erase();

    /// For a process that was divided off: the line is its parent's business.
    static void forget();

private:
    size_t columns() const;

    int fd;
    size_t width = 0;  // of what stands there
};

}  // namespace vextrace::tools
