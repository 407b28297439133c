#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "libvexstream/ByteSource.h"
#include "libvexstream/GpsView.h"
#include "libvexstream/visibility.h"
#include "libvextrace/messageID.h"

namespace vextrace {

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
    std::span<const uint8_t> bytes;  ///< valid until the next call; of damage longer than any
                                     ///< message the front alone
    uint64_t length = 0;             ///< all of its bytes
    msgid_t id = MSGID_INVALID;      ///< of a message
    const GpsView* gps = nullptr;    ///< of a GPS message; null of what is none. The reader's,
                                     ///< and like the bytes valid until the next call
    std::string reason;              ///< of damage, for people
    bool reachesEnd = false;         ///< of damage: no message comes behind it
};

/// Reads a trace message by message, in bounded memory, and goes on behind damage at the next place
/// where size field, id, payload and what follows agree. The items account for every byte, in order
/// and without overlap. A sound trace has no damage; a damaged place costs at most the two messages
/// that it touches, with this limit: the payload of another type than GPS cannot be checked, so its
/// size field may be changed to lead to the end of a later message unnoticed.
///
///     MemorySource bytes(trace);
///     TraceReader reader(bytes);
///     for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END; item =
///     reader.next())
class VEXSTREAM_EXPORT TraceReader {
public:
    /// \param source  read from its current position on; must outlive the reader
    explicit TraceReader(ByteSource& source);
    TraceReader(const TraceReader&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;
    ~TraceReader();

    /// \throws what the source throws; what was complete before has been given out
    TraceItem next();

    /// Whether a sound message was found yet. A trace without any is none.
    bool foundMessage() const;

    /// Bytes given out so far: messages and damage.
    uint64_t position() const;

    /// For a trace that grows: an incomplete message at the end is left for the next call of
    /// next(), which answers END meanwhile. A message that is complete waits for nothing behind it.
    /// What is incomplete may be taken away from the file, as a recorder does that continues it.
    void setGrowing(bool growing);

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace vextrace
