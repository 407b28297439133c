#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/report/Track.h"

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

/// A track drawn as SVG: north is up, and at each place the scale is the same in both directions
/// (Mercator's projection).
class TrackPicture {
public:
    /// Size of the picture. Its units are tenths of what a large screen can show.
    static constexpr int WIDTH = 10000;
    static constexpr int HEIGHT = 7600;

    /// \param ofTrack  at least one
    explicit TrackPicture(const std::vector<TrackPoint>& ofTrack);

    struct Spot {
        int x, y;
    };

    /// Where a place is in the picture; its longitude as continued() from those of the track.
    Spot spot(double latitude, double longitude) const;

    /// At the middle of the picture.
    double metresPerUnit() const { return metres; }

    /// The whole picture, with the marks that the page's script moves.
    /// \param description  for those who cannot see it
    std::string svg(const std::string& description) const;

    /// What the colours mean, as HTML; empty when no speed is known.
    std::string legend() const;

private:
    std::string lines() const;
    std::string gaps() const;
    std::string endMarks() const;
    std::string scaleBar() const;

    const std::vector<TrackPoint>& points;
    SpeedScale speeds;
    double middleX = 0, middleY = 0;  ///< of the track, in the units of the projection
    double scale = 1;                 ///< of the picture per unit of the projection
    double metres = 1;
};

}  // namespace vextrace::tools
