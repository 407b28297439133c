#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "libvexstream/Fix.h"
#include "libvexstream/GpsView.h"
#include "libvexstream/visibility.h"

namespace vextrace {

/// Which fixes of a trace are wanted.
struct FixChoice {
    timeStamp_t from = 0;                                         ///< earliest stamp
    timeStamp_t until = std::numeric_limits<timeStamp_t>::max();  ///< latest stamp, included
    bool unchecked = false;  ///< whether sentences with a wrong checksum count, too

    /// Whether both want the same.
    bool operator==(const FixChoice&) const = default;
};

/// Chooses fixes of the messages of a trace, given in their order. Whoever makes a table or a track
/// of a trace asks this, so that all have the same fixes.
class VEXSTREAM_EXPORT FixChooser {
public:
    /// What a message is.
    enum class Outcome {
        TAKEN,     ///< fix() is wanted
        OUTSIDE,   ///< before or after the time that is wanted
        REPEATED,  ///< says a fix of its epoch again
        WRONG,     ///< has no sentence that counts
        NO_FIX,    ///< holds neither RMC nor GGA
        MORE       ///< likewise, but goes on from the message before, of the same stamp
    };

    static constexpr size_t OUTCOMES = 6;  ///< how many outcomes there are

    /// For the messages of one trace; see endTrace().
    explicit FixChooser(const FixChoice& wanted)
        : choice(wanted), fixes(wanted.unchecked ? FixSource::ALL : FixSource::NOT_WRONG) {}

    /// What a message is. To be asked once for each, in their order.
    Outcome choose(const GpsView& message);

    /// The same for a message that lies outside whatever its stamp: it has a say in the verdicts on
    /// those behind it.
    void passOver(const GpsView& message);

    /// Of the message that was TAKEN last; valid until the next call of choose().
    const Fix& fix() const { return *chosen; }

    /// What follows is another trace.
    void endTrace();

    /// Whether both choose alike whatever comes: what was carried from message to message is the
    /// same.
    bool operator==(const FixChooser&) const = default;

private:
    FixChoice choice;
    FixReader fixes;
    std::optional<Fix> chosen;
    std::optional<timeStamp_t> lastStamp;
};

}  // namespace vextrace
