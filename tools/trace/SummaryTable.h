#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/trace/Summary.h"

namespace vextrace::tools {

/// Summaries as a table for people: a line for each trace, and the sum of all.
class SummaryTable {
public:
    /// \param names  of the traces, as they were given
    explicit SummaryTable(const std::vector<std::string>& names);

    std::string head() const;
    /// What the trace holds counts for the sum, too.
    std::string row(const std::string& trace, const Summary& summary);
    std::string sum() const;

private:
    struct Values {
        std::optional<timeStamp_t> begin;
        timeStamp_t duration = 0;
        uint64_t fixes = 0;
        double metres = 0;
        std::optional<double> speed;  // the highest
        uint64_t damagedPlaces = 0;
    };

    std::string line(const std::string& name, const Values& values) const;

    size_t nameWidth;
    uint64_t traces = 0;
    Values all;
};

}  // namespace vextrace::tools
