#pragma once

#include <termios.h>

#include <optional>

#include "tools/io/InputFile.h"

namespace vextrace::tools {

/// Makes a serial line give out every byte as it comes, with nothing added, changed or swallowed,
/// and puts its settings back at the end. Does nothing to inputs that are no lines, nor to the
/// terminal that the user types at.
class SerialLine {
public:
    /// \param input  must outlive the line
    /// \param baud   bits a second; without it the line keeps its rate
    /// \throws UsageError when \p baud is given for what is no line, or is no rate that it has
    SerialLine(const InputFile& input, std::optional<unsigned> baud);
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;
    ~SerialLine();

    /// Whether the input is a line, whose end is a hang-up.
    bool isLine() const { return before.has_value(); }

private:
    int fd;
    std::optional<termios> before;
};

}  // namespace vextrace::tools
