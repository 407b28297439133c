#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "libvexstream/FixChooser.h"
#include "tools/export/Format.h"
#include "tools/trace/walkTraces.h"

namespace vextrace::tools {

/// Chooses what a document holds, divides it into lines and counts what is left out.
class Exporter : public TraceVisitor {
public:
    /// \param document     must outlive the exporter
    /// \param longestGap   nanoseconds between two fixes of one line
    /// \param isUnchecked  whether sentences with a wrong checksum are taken
    Exporter(Format& document, timeStamp_t longestGap, bool isUnchecked)
        : format(document),
          content(document.content()),
          gap(longestGap),
          chooser({.unchecked = isUnchecked}) {}

    void beginTrace(const std::string& path) override { name = path; }
    void addMessage(const TraceItem& message, uint64_t number) override;
    void passOver(const TraceItem& message) override;
    void endTrace(uint64_t bytes) override;

    /// What was left out, and why; empty where nothing was.
    std::string leftOut() const;

private:
    Format& begun();
    void addFixOf(const GpsView& message, uint64_t number);
    void addToLine(const Fix& fix, const GpsView& message, uint64_t number);
    bool goesOn(timeStamp_t before, timeStamp_t stamp) const;
    uint64_t count(FixChooser::Outcome outcome) const {
        return outcomes[static_cast<size_t>(outcome)];
    }

    Format& format;
    const Format::Content content;
    const timeStamp_t gap;
    std::string name;  // of the trace
    bool isBegun = false;
    std::optional<timeStamp_t> lastOfLine;  // nothing where none is begun
    FixChooser chooser;
    std::array<uint64_t, FixChooser::OUTCOMES> outcomes = {};
    // What was left out besides.
    uint64_t invalid = 0;
    uint64_t outside = 0;
    uint64_t others = 0;
};

}  // namespace vextrace::tools
