#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "libvexstream/FixChooser.h"
#include "tools/export/Format.h"

namespace vextrace::tools {

/// What of a trace is exported.
struct ExportChoice {
    timeStamp_t gap = 5'000'000'000;  ///< the longest time between two fixes of one line
    bool unchecked = false;           ///< whether sentences with a wrong checksum are taken
};

/// Chooses what a document holds, divides it into lines and counts what is left out.
class Exporter {
public:
    /// \param document  must outlive the exporter
    Exporter(Format& document, const ExportChoice& chosen);

    /// \param name  as it was given
    void beginTrace(const std::string& name) { format.beginTrace(name); }

    /// \param number  of the message in its trace, counted from 1
    void add(const GpsView& message, uint64_t number);

    /// Counts a message from before or behind the time asked for.
    void addOutside(const GpsView& message);

    /// Counts a message of another type.
    void addOther() { ++others; }

    /// What follows is another trace.
    void endTrace();

    /// What was left out, and why; empty where nothing was.
    std::string leftOut() const;

private:
    void addFixOf(const GpsView& message, uint64_t number);
    void addToLine(const Fix& fix, const GpsView& message, uint64_t number);
    uint64_t count(FixChooser::Outcome outcome) const {
        return outcomes[static_cast<size_t>(outcome)];
    }

    Format& format;
    const ExportChoice choice;
    const Format::Content content;
    std::optional<timeStamp_t> lastOfLine;
    FixChooser chooser;
    std::array<uint64_t, FixChooser::OUTCOMES> outcomes = {};
    // What was left out besides.
    uint64_t invalid = 0;
    uint64_t outside = 0;
    uint64_t others = 0;
};

}  // namespace vextrace::tools
