#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "tools/io/OutputFile.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

/// Writes lines about a message, each behind the same prefix.
class LineWriter {
public:
    /// \param isRaw  whether a receiver's bytes go out as they are, or escaped
    LineWriter(OutputFile& destination, bool isRaw) : output(destination), raw(isRaw) {}

    /// What stands in front of every line that begins from now on.
    void setPrefix(std::string text) { prefix = std::move(text); }

    void beginLine() { line = prefix; }
    void endLine() {
        line += '\n';
        output.write(line);
    }

    /// Adds text of the program's own to the line.
    void add(std::string_view text) { line += text; }

    /// Adds what a receiver sent.
    void addReceived(std::string_view text) {
        if (raw) {
            line += text;
        } else {
            appendEscaped(line, text);
        }
    }

    /// For texts that are formatted in place.
    std::string& text() { return line; }

private:
    OutputFile& output;
    bool raw;
    std::string prefix;
    std::string line;
};

}  // namespace vextrace::tools
