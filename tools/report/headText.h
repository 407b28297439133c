#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "tools/report/Page.h"
#include "tools/report/Survey.h"
#include "tools/trace/Summary.h"

namespace vextrace::tools {

/// The name of a file in at most some 200 bytes.
std::string shortName(const std::string& name);

/// Where traces are damaged, for the page: the first places, and how many more there are.
class DamageNotes {
public:
    static constexpr size_t MOST = 10;

    void add(const std::string& name, const TraceItem& damage);

    /// A trace that could not be read to its end.
    void add(const std::string& note);

    std::vector<std::string> texts() const;

private:
    std::vector<std::string> notes;
    uint64_t further = 0;
};

// The texts of the page's head and of its table, from the numbers of the traces.

/// "drive.trace", or "drive.trace and 2 more": the names without their folders.
std::string titleOf(const std::vector<SurveyedTrace>& traces);

/// From the earliest to the latest time, or that there is none.
std::string spanOf(const Summary& summary);

std::vector<Fact> factsOf(const Summary& summary, const std::vector<SurveyedTrace>& traces);

/// What else must be known of the numbers.
std::vector<std::string> notesOf(const Summary& summary);

/// A row per code, MOST_ROWS at most.
std::vector<SentenceRow> rowsOf(const SentenceCounts& sentences);
constexpr size_t MOST_ROWS = 200;

/// How many sentences are of further codes; empty where none is.
std::string furtherCodes(const SentenceCounts& sentences);

}  // namespace vextrace::tools
