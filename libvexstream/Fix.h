#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "libvexstream/GpsView.h"
#include "libvexstream/TalkerMemory.h"
#include "libvexstream/sentence.h"
#include "libvexstream/visibility.h"

namespace vextrace {

/// What the RMC and GGA sentences of one message say, a value only where the receiver sent one that
/// makes sense. A sentence that is known to be wrong gives none, and takes none of the other one's
/// away. The position is that of the RMC sentence where the fix is made of one, else of the GGA's.
struct VEXSTREAM_EXPORT Fix {
    timeStamp_t stamp = 0;            ///< of the message: nanoseconds since 1970, UTC; see hasDate
    std::string time;                 ///< as it was sent, in RMC or else GGA; may be none
    bool valid = false;               ///< the receiver calls it valid, and it has a position
    std::optional<double> latitude;   ///< degrees, north positive, -90 to 90
    std::optional<double> longitude;  ///< degrees, east positive, -180 to 180
    std::optional<double> altitude;   ///< metres, -1e8 to 1e8
    std::optional<double> speed;      ///< km/h, 0 to 1e6
    std::optional<double> course;     ///< degrees, 0 to 360
    std::optional<unsigned> satellites;   ///< in use, 0 to 999
    std::optional<unsigned> quality;      ///< of GGA: 0 no fix, 1 GPS, 2 differential, ...; to 999
    std::optional<double> hdop;           ///< horizontal dilution of precision, 0 to 1e6
    std::optional<Checksum> rmcChecksum;  ///< nothing where there is no RMC sentence
    std::optional<Checksum> ggaChecksum;  ///< nothing where there is no GGA sentence
    bool usesRmc = false;                 ///< it is made of the RMC sentence
    bool usesGga = false;                 ///< it is made of the GGA sentence

    /// Whether it says again what another message of its epoch said; see FixReader.
    bool repeats = false;

    /// Of the sentences that it is made of: right only where each has a right one. WRONG where it
    /// is made of none.
    Checksum checksum() const;

    /// Whether it is made of a sentence with a wrong checksum, or of none.
    bool isDoubtful() const { return checksum() == Checksum::WRONG; }

    /// Whether all values are the same.
    bool operator==(const Fix&) const = default;
};

/// What fixes are made of.
enum class FixSource {
    NOT_WRONG,  ///< sentences with a right checksum or without one
    ALL         ///< wrong ones, too
};

/// The fix of a message by itself; nothing where it holds neither RMC nor GGA.
VEXSTREAM_EXPORT std::optional<Fix> fixOf(const GpsView& message,
                                          FixSource source = FixSource::NOT_WRONG);

/// The fixes of the messages of a trace, in their order. The verdict on their sentences is that of
/// a TalkerMemory. Receivers that send RMC or GGA more than once in an epoch fill several messages,
/// which are all of one fix: the later ones repeat it. One that is valid, or without a wrong
/// checksum, where that before is not, repeats none.
class VEXSTREAM_EXPORT FixReader {
public:
    /// \param fixSource  which sentences the fixes are made of
    explicit FixReader(FixSource fixSource = FixSource::NOT_WRONG) : source(fixSource) {}

    /// As fixOf(). To be asked once for each message.
    std::optional<Fix> read(const GpsView& message);

    /// What follows is another trace.
    void endTrace();

    /// Whether both make the same of whatever comes.
    bool operator==(const FixReader&) const = default;

private:
    bool repeatsLast(const Fix& fix) const;

    FixSource source;
    TalkerMemory talkers;
    std::optional<Fix> last;  // that is made of something and repeats none
};

}  // namespace vextrace
