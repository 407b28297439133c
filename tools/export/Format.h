#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libvexstream/Fix.h"
#include "libvexstream/GpsView.h"
#include "tools/io/OutputFile.h"

namespace vextrace::tools {

/// A document of one format, written message by message in bounded memory.
class Format {
public:
    /// What of a trace the document holds.
    enum class Content {
        VALID_FIXES,  ///< lines of fixes that are valid, and so have a position
        ALL_FIXES,    ///< every fix, valid or not
        SENTENCES     ///< the sentences of every message
    };

    explicit Format(OutputFile& output) : out(output) {}
    Format(const Format&) = delete;
    Format& operator=(const Format&) = delete;
    virtual ~Format() = default;

    virtual Content content() const = 0;

    /// Writes what stands in front of the first trace.
    virtual void begin() {}

    /// What follows is of the trace with this name, as it was given. A trace without anything for
    /// the document is not begun.
    virtual void beginTrace(const std::string& /*name*/) {}

    /// The next fix does not go on from the one before. Lines are those of VALID_FIXES.
    /// \param first  fix of the line
    virtual void beginLine(const Fix& /*first*/) {}

    /// Writes a fix, given with the message that it comes from.
    /// \param number  of the message in its trace, counted from 1
    virtual void addFix(const Fix& /*fix*/, const GpsView& /*message*/, uint64_t /*number*/) {}

    /// Writes a message whose content is SENTENCES.
    virtual void addMessage(const GpsView& /*message*/) {}

    /// A message that is not written, whose content is SENTENCES.
    virtual void passOver(const GpsView& /*message*/) {}

    /// The line has ended.
    virtual void endLine() {}

    /// The trace has ended, behind its last line.
    virtual void endTrace() {}

    /// Completes the document.
    virtual void end() {}

protected:
    OutputFile& out;
};

std::unique_ptr<Format> makeGpx(OutputFile& output);
std::unique_ptr<Format> makeGeoJson(OutputFile& output);
std::unique_ptr<Format> makeKml(OutputFile& output);
std::unique_ptr<Format> makeCsv(OutputFile& output);
std::unique_ptr<Format> makeJsonLines(OutputFile& output);
std::unique_ptr<Format> makeNmea(OutputFile& output);

}  // namespace vextrace::tools
