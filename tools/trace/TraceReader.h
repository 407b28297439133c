#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tools/io/InputFile.h"

namespace vextools {

/// What TraceReader found next.
struct TraceItem {
    enum class Kind {
        GPS,     ///< a GPS message
        OTHER,   ///< a message of another type, not decoded
        DAMAGE,  ///< bytes that are no message
        END      ///< nothing more; for a growing trace: nothing more yet
    };

    Kind kind = Kind::END;
    uint64_t offset = 0;             ///< of the first byte, in the trace
    std::span<const uint8_t> bytes;  ///< valid until the next call; of long damage the front alone
    uint64_t length = 0;             ///< all of its bytes
    msgid_t id = MSGID_INVALID;      ///< of a message
    std::unique_ptr<GPSTraceMessage> gps;  ///< of a GPS message
    std::string reason;                    ///< of damage, for people
};

/// Reads a trace message by message, in bounded memory, and goes on behind damage at the next place
/// where size field, id, payload and the following header agree.
class TraceReader {
public:
    /// \param input  read from its current position on; must outlive the reader
    explicit TraceReader(InputFile& input);
    ~TraceReader();

    /// \throws DataError on a read error; what was complete before has been given out
    TraceItem next();

    /// Whether a sound message was found yet. A trace without any is none.
    bool foundMessage() const;

    /// Bytes given out so far: messages and damage.
    uint64_t position() const;

    /// For a trace that grows: an incomplete message at the end is left for the next call of
    /// next(), which answers END meanwhile.
    void setGrowing(bool growing);

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace vextools
