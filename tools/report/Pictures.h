#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/report/Drive.h"
#include "tools/report/Survey.h"

namespace vextrace::tools {

/// What the page shows of the drives beside numbers.
struct Pictures {
    std::string track;   ///< HTML: the tracks and what belongs to them
    std::string data;    ///< of pageData()
    std::string extent;  ///< how many fixes are drawn, for people
};

/// The second reading of traces: draws the drives that a survey told of.
class Drawing {
public:
    /// How many fixes can be drawn, so that their data have so many bytes, or nearly so.
    static uint64_t precisionFor(const Survey& survey, size_t bytes);

    /// \param survey     must outlive the drawing
    /// \param precision  how many fixes may be drawn, or nearly so; where it is low the trace lines
    ///                   are cut shorter, too
    Drawing(const Survey& survey, uint64_t precision);

    /// What follows is of the next trace, or of none that is drawn.
    /// \return whether it is drawn
    bool beginTrace();

    /// \param message  in its byte-array form
    /// \param number   of the message in its trace
    void add(const Fix& fix, std::span<const uint8_t> message, uint64_t number);
    void endTrace();

    /// To be called once, behind all traces.
    /// \param bytesOfTrack  at most; precision is let go until they suffice
    Pictures finish(size_t bytesOfTrack);

private:
    const Survey& survey;
    Division division;
    Drive::Limits limits;
    std::optional<Drive> drive;
    std::vector<DrawnDrive> drawn;
};

}  // namespace vextrace::tools
