#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "libvexstream/Arrivals.h"
#include "libvexstream/EpochBuilder.h"
#include "libvexstream/Framer.h"
#include "libvexstream/visibility.h"

namespace vextrace {

/// The whole way from a receiver's bytes to the messages of a trace: finds the sentences, and
/// collects them by epochs.
///
///     recording.feed(bytes);
///     while (const auto step = recording.next()) {
///         write(step->part.bytes);
///     }
///
/// At the end finish() is called, next() until it answers nothing, and then take().
class VEXSTREAM_EXPORT Recording {
public:
    /// A sentence, and the messages that were complete before it; often none.
    struct Step {
        Framer::Sentence sentence;       ///< as the framer gives it
        const EpochBuilder::Part& part;  ///< valid until the next call
    };

    /// \param source     where stamps come from
    /// \param firstDate  the date as long as no sentence brings one
    Recording(StampSource source, std::chrono::sys_days firstDate)
        : stamps(source), epochs(source, firstDate) {}

    /// More bytes; to be called when next() has nothing more.
    /// \param bytes    must stay as they are until next() answers nothing
    /// \param arrival  when they were received, nanoseconds since 1970; for StampSource::ARRIVAL
    void feed(std::string_view bytes, timeStamp_t arrival = 0);

    /// Nothing follows: what waits for more bytes comes out of next().
    void finish() { framer.finish(); }

    /// The next sentence, which is collected; nothing where more bytes are needed to know it.
    std::optional<Step> next();

    /// Gives out what was collected, at the end or when the receiver is silent. The epoch may go on
    /// all the same.
    /// \return messages, often none; valid until the next call
    const EpochBuilder::Part& take() { return epochs.take(); }

    /// Whether nothing is collected.
    bool isEmpty() const { return epochs.isEmpty(); }

    /// Of the sentences given out so far. Bytes that wait for more count as skipped.
    const Framer::Counters& counters() const { return framer.counters(); }

private:
    const StampSource stamps;
    Framer framer;
    Arrivals arrivals;
    EpochBuilder epochs;
};

}  // namespace vextrace
