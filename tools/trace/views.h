#pragma once

#include <cstdint>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "libvexstream/Fix.h"
#include "libvexstream/GpsView.h"
#include "tools/io/OutputFile.h"

namespace vextrace::tools {

/// What can be shown of a GPS message, in lines behind the same prefix. None ends in a receiver's
/// line end.
class Views {
public:
    /// \param isRaw  whether a receiver's bytes go out as they are, or escaped
    Views(OutputFile& destination, bool isRaw) : output(destination), raw(isRaw) {}

    /// What stands in front of every line from now on.
    void setPrefix(std::string text) { prefix = std::move(text); }

    /// Its trace line, as the library prints it.
    void showLine(const GpsView& gps);

    /// The numbered fields of its RMC and GGA sentences.
    void showFields(const GPSTraceMessage& gps);

    /// Its RMC and GGA sentences as numbers, a line each. A value that the receiver did not send is
    /// called missing; one that makes no sense, invalid; and a checksum that is wrong, too.
    /// \param fix  of the message, for the verdicts
    void showFix(const GpsView& gps, const Fix& fix);

    /// Its RDB text; nothing where there is no position.
    void showRdb(const GPSTraceMessage& gps);

    /// Bytes of the trace in hexadecimal and as characters, sixteen a line.
    void showBytes(std::span<const uint8_t> bytes);

private:
    void showDump();
    void showReceived(std::string_view text);
    void beginLine() { line = prefix; }
    void addReceived(std::string_view text);
    void endLine() {
        line += '\n';
        output.write(line);
    }

    OutputFile& output;
    const bool raw;
    std::string prefix;
    std::string line;
    std::ostringstream dump;  // kept: to make one takes longer than to write to it
};

}  // namespace vextrace::tools
