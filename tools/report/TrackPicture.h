#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/report/Drive.h"

namespace vextrace::tools {

/// Round steps of speed, each with a colour of its own.
class SpeedScale {
public:
    static constexpr size_t MOST_STEPS = 8;

    /// \param fastest  km/h
    explicit SpeedScale(double fastest);

    double step() const { return width; }
    size_t steps() const { return count; }

    /// Of the step that the speed lies in.
    size_t index(double speed) const;

    /// Name of the colour in the page's style: the scale is spread over all that there are.
    std::string colour(size_t index) const;

private:
    double width = 1;
    size_t count = 1;
};

/// Name of a drive's colour and of its kind of line in the page's style.
std::string driveColour(size_t drive);

/// Which drives are shown together, a number for each: those with the most fixes first, and with
/// them all that are so near that they can be seen in one picture.
/// \param drives  with a frame or without; the latter are with the first ones
std::vector<size_t> neighbourhoods(const std::vector<DrawnDrive>& drives,
                                   const std::vector<uint64_t>& fixes);

/// The tracks of drives drawn as SVG: north is up, and at each place the scale is the same in both
/// directions (Mercator's projection). One drive is coloured by its speed, several have a colour
/// each.
class TrackPicture {
public:
    /// Size of the picture. Its units are tenths of what a large screen can show.
    static constexpr int WIDTH = 10000;
    static constexpr int HEIGHT = 7600;

    /// \param drives  at least one has a frame; must outlive the picture
    /// \param groups  their neighbourhoods(); the first is what is to be seen
    TrackPicture(const std::vector<DrawnDrive>& drives, const std::vector<size_t>& groups);

    /// The whole picture, with the marks that the page's script moves.
    /// \param description  for those who cannot see it
    std::string svg(const std::string& description) const;

    /// What the colours of speed mean, as HTML; empty when none is known.
    std::string speedLegend() const;

    /// Whether fixes are missing in a line.
    bool hasGaps() const;

private:
    struct Spot {
        double x, y;
    };

    Spot spot(const DrawnDrive& drive, const TrackPoint& point) const;
    std::string lines(size_t index) const;
    std::string endMarks(size_t index) const;
    std::string scaleBar() const;
    bool isOne() const { return drives.size() == 1; }

    const std::vector<DrawnDrive>& drives;
    SpeedScale speeds;
    Area shown = {};
    double scale = 1;  ///< units of the picture of a radian
};

}  // namespace vextrace::tools
