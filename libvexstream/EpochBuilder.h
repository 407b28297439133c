#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/sentence.h"
#include "libvexstream/visibility.h"
#include "libvextrace/GPSTraceMessage.h"

namespace vextrace {

/// Where the stamps of messages come from.
enum class StampSource {
    SENTENCES,  ///< date and time of the sentences, in nanoseconds since 1970, UTC
    ARRIVAL     ///< when the first byte of the epoch was received
};

/// Makes messages of sentences, so that what belongs to one fix lies in one place.
///
/// An epoch begins with a timed sentence whose time differs from that of the epoch before, and
/// takes in every sentence up to the next such; what comes in front of the first timed sentence
/// belongs to its epoch. The k-th sentence of a code goes into the k-th message of its epoch, or,
/// where that is full, into the next with room for it:
///
///     $GPRMC,1  $GPGSV,1  $GPGSV,2  $GPGGA,1     ->     GGA,1 GSV,1 RMC,1  |  GSV,2
///
/// All messages of an epoch bear one stamp: its time, on the date of its first trusted RMC or ZDA
/// that has a valid one; else on the date of the epoch before, or, where the time of day went back
/// by more than 12 hours, on the day after that. Where there is no date yet, it is a given one. An
/// epoch without any time bears the beginning of that day.
///
/// A timed sentence is trusted when its checksum is right, or as long as the source has sent no
/// sentence with a right one. An epoch without a trusted one is stamped like the others and then
/// forgotten: the next one goes on from the epoch before it.
class VEXSTREAM_EXPORT EpochBuilder {
public:
    /// Messages of one epoch: all that were collected since the last ones were given out.
    struct Part {
        std::vector<uint8_t> bytes;  ///< byte-array forms, back to back
        size_t messages = 0;         ///< how many these are
        size_t sentences = 0;        ///< how many are in them
        size_t timedSentences = 0;   ///< how many of these have a time
        timeStamp_t stamp = 0;       ///< of each of them
        bool beginsEpoch = false;    ///< false where the epoch goes on
    };

    /// What a part holds of sentences at most. An epoch that is longer is given out in parts.
    static constexpr size_t PART_ROOM = size_t{1024} * 1024;

    /// \param source     where stamps come from
    /// \param firstDate  the date as long as no sentence brings one; none where calendarDay() does
    ///                   not have it
    EpochBuilder(StampSource source, std::chrono::sys_days firstDate);

    /// Collects a sentence, as it was received. What was collected before is given out when the
    /// sentence begins an epoch, or has no room beside it.
    ///
    /// \param sentence  at most MESSAGE_ROOM bytes with its line feed, and no bare "$G"
    /// \param checksum  the verdict on it, as a Framer gives it
    /// \param arrival   when its first byte was received, nanoseconds since 1970
    /// \return messages to write, often none; valid until the next call
    /// \throws InvalidMessageException  IM_INVALID_LEN where it is longer; nothing has changed then
    const Part& add(std::string_view sentence, Checksum checksum, timeStamp_t arrival);

    /// The same for those who have no verdict yet.
    const Part& add(std::string_view sentence, timeStamp_t arrival) {
        return add(sentence, receivedChecksum(sentence), arrival);
    }

    /// Gives out what was collected. The epoch may go on all the same; one that has no time yet is
    /// over.
    /// \return messages to write, often none; valid until the next call
    const Part& take();

    /// Whether nothing is collected, so that take() gives no message.
    bool isEmpty() const { return entries.empty(); }

private:
    // A sentence, and the message that it goes into: in this order they are stored.
    struct Entry {
        uint64_t code;
        uint32_t message;
        uint32_t begin;
        uint32_t size;

        bool operator<(const Entry& other) const {
            return message != other.message ? message < other.message : code < other.code;
        }
    };

    // Where the next sentence of a code may go, in the part with this number.
    struct Place {
        uint64_t part;
        uint32_t next;
    };

    void clearPart();
    void endEpoch();
    void noteTimed(std::string_view sentence, Checksum checksum);
    void collect(std::string_view sentence);
    uint32_t messageFor(uint64_t code, size_t size);
    std::chrono::sys_days date() const;
    timeStamp_t stamp() const;
    void build();

    const StampSource source;

    // The part in hand.
    std::string text;  // its sentences, each with a line feed
    size_t timed = 0;  // of them
    std::vector<Entry> entries;
    std::vector<uint32_t> sizes;       // of its messages, what their sentences take
    std::map<uint64_t, Place> places;  // by code
    uint64_t partNumber = 1;

    // The epoch in hand.
    bool epochGoesOn = false;  // a part of it was given out
    timeStamp_t epochArrival = 0;
    std::optional<TimeOfDay> epochTime;
    std::string sentTime;  // as it was sent last, for most sentences of an epoch send the same
    std::optional<std::chrono::sys_days> epochDate;  // of a trusted sentence
    bool epochIsTrusted = false;                     // it has a trusted sentence

    // The last trusted epoch before; without one the given date.
    std::chrono::sys_days lastDate;
    std::optional<uint64_t> lastTime;  // nanoseconds since midnight

    bool sourceSendsRight = false;  // it has sent a sentence with a right checksum

    Part part;
};

}  // namespace vextrace
