#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "tools/report/Moment.h"

namespace vextrace::tools {

/// What is followed over time. A fix has each of them or not; all have the first.
enum class Followed : size_t { FIX, POSITION, SPEED, ALTITUDE, SATELLITES, QUALITY, COUNT };

/// Nothing where the fix does not have it. Position, speed and altitude are those of valid fixes
/// alone: what a receiver sends beside an invalid position is often left over.
std::optional<double> valueOf(const Fix& fix, Followed what);

/// The moments of a drive, thinned to what can be seen. A drive is cut into stretches; of each
/// stretch and each value the first, the last, the least and the greatest are kept, and the two
/// ends of its longest gap: where a stretch is no wider than a point of the screen, a line through
/// these looks as the line through all fixes does.
class Stretches {
public:
    /// \param gapLength  nanoseconds; where a value is missing for longer than that, its line is
    ///                   open
    explicit Stretches(timeStamp_t gapLength) : gap(gapLength) {}

    /// \param moment   without breaks and texts
    /// \param message  in its byte-array form
    /// \param stretch  that it belongs to: that of the moment before, or a greater one
    void add(Moment moment, std::span<const uint8_t> message, uint64_t stretch);

    /// What is kept, in order of time. To be called once, behind all moments.
    std::vector<Moment> finish();

    /// What is kept where neighbouring stretches are put together.
    /// \param moments  what finish() gave
    /// \param part     of the stretches that remain, nearly; below 1
    static std::vector<Moment> thinned(std::vector<Moment> moments, double part, timeStamp_t gap);

private:
    // With its message, of which texts are made where it is kept; empty where it has them.
    struct Candidate {
        Moment moment;
        std::vector<uint8_t> message;
    };
    using CandidatePtr = std::shared_ptr<Candidate>;

    // One value within a stretch. Pointers are empty where no fix has it.
    struct Course {
        CandidatePtr first, last, least, greatest, beforeGap, afterGap;
        double minimum = 0;
        double maximum = 0;
        timeStamp_t longestGap = 0;
    };

    static constexpr size_t COURSES = static_cast<size_t>(Followed::COUNT);

    // Of one fix.
    using Values = std::array<std::optional<double>, COURSES>;

    static Values valuesOf(const Fix& fix);
    void noteGaps(Moment& moment, const Values& values);
    void add(const CandidatePtr& candidate, const Values& values);
    static void follow(Course& values, const CandidatePtr& candidate, double value,
                       bool isBehindGap);
    void close();
    void orderByTime();

    timeStamp_t gap;
    std::array<Course, COURSES> open;
    std::array<std::optional<timeStamp_t>, COURSES> latest;  // of each value
    std::array<CandidatePtr, 2> latestTwo;
    uint64_t openStretch = 0;
    timeStamp_t latestStamp = 0;
    unsigned run = 0;
    std::vector<Moment> kept;
};

}  // namespace vextrace::tools
