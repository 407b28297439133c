#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvexstream/TraceReader.h"
#include "tools/trace/BoundingBox.h"
#include "tools/trace/Motion.h"
#include "tools/trace/Path.h"

namespace vextrace::tools {

/// A pause between two messages.
struct Gap {
    timeStamp_t begin;
    timeStamp_t end;

    timeStamp_t length() const { return end - begin; }
};

/// The time stamps of a trace's GPS messages.
struct TimeSpan {
    static constexpr size_t LISTED_GAPS = 100;

    std::optional<timeStamp_t> first;  ///< the earliest
    std::optional<timeStamp_t> last;   ///< the latest
    uint64_t stepsBack = 0;            ///< messages with an earlier time than the one before
    uint64_t gapCount = 0;             ///< pauses longer than asked for
    std::optional<Gap> longestGap;     ///< of those
    std::vector<Gap> gaps;             ///< the first of those

    void add(timeStamp_t stamp, timeStamp_t allowedGap);
    void endTrace() { previous.reset(); }

private:
    void addGap(const Gap& gap);

    std::optional<timeStamp_t> previous;
};

/// How many sentences there are of each code.
class SentenceCounts {
public:
    /// Of one code.
    struct Row {
        std::string code;  ///< without a line end
        uint64_t number = 0;
        uint64_t wrongChecksums = 0;
        std::optional<timeStamp_t> first;  ///< the earliest time stamp of those that have a date
        std::optional<timeStamp_t> last;   ///< the latest
    };

    /// Different codes that are told apart; those of further ones are counted together.
    static constexpr size_t MOST_CODES = 1000;

    /// \param stamp  of its message; nothing where that has no date
    void add(std::string_view code, Checksum checksum = Checksum::NONE,
             std::optional<timeStamp_t> stamp = std::nullopt);

    uint64_t total() const;
    /// Of codes beyond MOST_CODES.
    uint64_t others() const { return further; }
    /// In ascending order of the codes.
    std::vector<Row> rows() const;

private:
    Row* rowOf(std::string_view code);

    std::vector<Row> counts;
    std::map<std::string, size_t, std::less<>> places;  // of the codes among them
    size_t expected = 0;  // most messages hold the codes of the one before, in the same order
    uint64_t further = 0;
};

/// How many satellites the fixes used.
class SatelliteCounts {
public:
    /// More than any receiver uses is no count, and is left out.
    static constexpr unsigned MOST = 255;

    void add(unsigned satellites);

    /// Nothing where no fix told.
    std::optional<unsigned> least() const;
    std::optional<double> median() const;
    std::optional<unsigned> most() const;

private:
    unsigned atRank(uint64_t rank) const;

    std::array<uint64_t, MOST + 1> fixes = {};
    uint64_t total = 0;
};

/// Least and greatest of some values.
struct ValueRange {
    std::optional<double> least;
    std::optional<double> greatest;

    void add(double value);
};

/// What a trace, or several of them, hold, in numbers. Bounded in size.
///
/// Satellites, distance, speed, altitude and box are those of the valid fixes without a wrong
/// checksum. The distance is the sum of the geodesics between two such fixes of one trace that
/// follow each other; where there is a gap between their times it is summed up apart.
class Summary {
public:
    /// \param longestPause  nanoseconds; a longer one is a gap
    explicit Summary(timeStamp_t longestPause) : allowedGap(longestPause) {}

    /// Adds what a reader gave out, in order.
    /// \param fix  that of a GPS message, by the FixReader of the trace
    void add(const TraceItem& item, const std::optional<Fix>& fix);

    /// The trace has ended: neither a gap nor a distance leads to the next one.
    void endTrace();

    /// Those of the messages that have a date; of all where none has one.
    const TimeSpan& times() const { return dated.first ? dated : undated; }

    timeStamp_t gapLimit() const { return allowedGap; }

    uint64_t bytes = 0;
    uint64_t gpsMessages = 0;
    uint64_t otherMessages = 0;
    std::map<msgid_t, uint64_t> otherById;
    uint64_t messagesWithoutDate = 0;  ///< GPS messages whose stamp is no more than a time of day
    uint64_t damagedPlaces = 0;
    uint64_t damagedBytes = 0;
    SentenceCounts sentences;
    uint64_t wrongChecksums = 0;  ///< sentences
    uint64_t noChecksums = 0;     ///< sentences
    uint64_t validFixes = 0;
    uint64_t invalidFixes = 0;
    uint64_t doubtfulFixes = 0;  ///< with a wrong checksum; neither of the others
    uint64_t repeatedFixes =
        0;  ///< messages that say a fix of their epoch again; none of the others
    SatelliteCounts satellites;
    Path path;
    ValueRange speed;     ///< km/h
    ValueRange altitude;  ///< metres
    BoundingBox positions;
    Motion motion;

private:
    void addGps(const GpsView& gps, const std::optional<Fix>& fix);
    void addSentences(const GpsView& gps, const std::optional<Fix>& fix);
    void addTime(timeStamp_t stamp);
    void addFix(const Fix& fix);
    bool isBehindGap(timeStamp_t stamp) const;

    timeStamp_t allowedGap;
    std::optional<timeStamp_t> lastFix;  // valid, of the trace in hand
    TimeSpan dated;
    TimeSpan undated;
};

}  // namespace vextrace::tools
