#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvexstream/TraceReader.h"
#include "tools/report/Outline.h"
#include "tools/trace/Summary.h"

namespace vextrace::tools {

/// A trace that was read, as the page names it: a drive.
struct SurveyedTrace {
    std::string name;  ///< escaped, and cut where it is long
    uint64_t bytes = 0;
    double metres = 0;
    std::optional<timeStamp_t> first = {};  ///< of the messages that have a date, or else of all
    std::optional<timeStamp_t> last = {};

    /// Nanoseconds.
    timeStamp_t duration() const { return first ? *last - *first : 0; }
};

/// The first reading of traces: their numbers, and what must be known before they are drawn.
class Survey {
public:
    /// More drives than a page can tell apart are counted, but not drawn.
    static constexpr size_t MOST_DRAWN = 100;

    /// \param gap  nanoseconds; a longer pause is a gap
    explicit Survey(timeStamp_t gap) : numbers(gap) {}

    /// What follows is of this trace, a drive of its own.
    void beginTrace(const std::string& name);
    void add(const TraceItem& item);
    void endTrace(uint64_t bytes);

    const Summary& summary() const { return numbers; }
    const std::vector<SurveyedTrace>& traces() const { return all; }

    /// Of those that are drawn.
    const std::vector<Outline>& outlines() const { return drawn; }

private:
    void addTime(timeStamp_t stamp);

    Summary numbers;
    FixReader fixes;
    std::vector<SurveyedTrace> all;
    std::vector<Outline> drawn;
    double metresBefore = 0;  // this trace
    bool foundDate = false;   // of this trace
};

/// Whether a fix is drawn: neither doubtful nor a repetition.
bool isDrawn(const Fix& fix);

}  // namespace vextrace::tools
