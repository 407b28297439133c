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
    /// \param survey  must outlive the drawing
    explicit Drawing(const Survey& survey);

    /// What follows is of the next trace, or of none that is drawn.
    /// \return whether it is drawn
    bool beginTrace();

    /// \param message  in its byte-array form
    /// \param number   of the message in its trace
    void add(const Fix& fix, std::span<const uint8_t> message, uint64_t number);
    void endTrace();

    /// To be called once, behind all traces. Precision is let go until the bytes suffice: fewer
    /// fixes are drawn, at last with trace lines that are cut shorter.
    /// \param bytes         of track and data, at most
    /// \param bytesOfTrack  of these
    Pictures finish(size_t bytes, size_t bytesOfTrack);

private:
    std::string track(const std::vector<size_t>& groups, size_t bytes);
    std::string data(const std::vector<uint64_t>& fixes, const std::vector<size_t>& groups,
                     size_t bytes);
    uint64_t moments() const;
    void thin(double part);

    const Survey& survey;
    Division division;
    std::optional<Drive> drive;
    std::vector<DrawnDrive> drawn;
};

}  // namespace vextrace::tools
