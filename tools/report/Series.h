#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "tools/report/Moment.h"

namespace vextrace::tools {

/// What is followed over time. A fix has each of them or not; all have the first.
enum class Followed : size_t { FIX, POSITION, SPEED, ALTITUDE, SATELLITES, QUALITY, COUNT };

/// Nothing where the fix does not have it. Position, speed and altitude are those of valid fixes
/// alone: what a receiver sends beside an invalid position is often left over.
std::optional<double> valueOf(const Fix& fix, Followed what);

/// The fixes of a drive over time, thinned to what can be seen, in bounded memory.
///
/// Time is cut into stretches of equal length. Of each stretch and each value the first, the last,
/// the least and the greatest are kept, and the two ends of its longest gap: where a stretch is no
/// wider than a point of the screen, a line through these looks as the line through all fixes
/// does. The stretches begin at a nanosecond, where every fix has its own, and are doubled whenever
/// too much is held.
class Series {
public:
    /// What is kept at most.
    struct Limits {
        size_t stretches = 16384;
        size_t bytes = 8 << 20;
    };

    /// A moment to draw.
    struct Drawn {
        const Moment* moment;
        /// Whether the line of a value (a bit each, 1 << Followed) begins anew here: behind a gap.
        unsigned breaks;
    };

    /// \param gap     nanoseconds; where a value is missing for longer than that, its line is open
    /// \param limits  for tests
    explicit Series(timeStamp_t gap);
    Series(timeStamp_t gap, const Limits& limits);

    /// In any order of time.
    void add(const MomentPtr& moment);

    /// Doubles the stretches until something more is left out.
    /// \return false when there is nothing to leave out: all time is one stretch
    bool coarsen();

    /// What is kept, in order of time. Valid until the next add() or coarsen().
    std::vector<Drawn> drawn();

    /// Fixes added.
    uint64_t size() const { return added; }

    /// Nanoseconds of a stretch.
    timeStamp_t stretch() const { return timeStamp_t{1} << shift; }

private:
    struct Course;
    struct Stretch;
    using Stretches = std::map<timeStamp_t, Stretch>;

    // One value within a stretch. Pointers are empty where no fix has it.
    struct Course {
        MomentPtr first, last, least, greatest, beforeGap, afterGap;
        double minimum = 0;
        double maximum = 0;

        void add(const MomentPtr& moment, double value, timeStamp_t gap);
        void append(const Course& later, timeStamp_t gap);
        void offerGap(const MomentPtr& before, const MomentPtr& after, timeStamp_t gap);
    };

    struct Stretch {
        std::array<Course, static_cast<size_t>(Followed::COUNT)> courses;
        size_t bytes = 0;  ///< with its moments; 0 while it is being added to

        std::vector<MomentPtr> moments() const;
        void measure();
    };

    void close();
    unsigned doublingsToMerge() const;
    void mergeStretches();
    size_t count() const;

    timeStamp_t gap;
    Limits limits;
    Stretches stretches;
    Stretch* open = nullptr;
    timeStamp_t openKey = 0;
    unsigned shift = 0;
    size_t held = 0;
    uint64_t added = 0;
};

}  // namespace vextrace::tools
