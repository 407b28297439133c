#pragma once

#include <cstdint>
#include <functional>
#include <limits>
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
    /// What was found.
    enum class Kind {
        GPS,     ///< a GPS message
        OTHER,   ///< a message of another type, not decoded
        DAMAGE,  ///< bytes that are no message
        END      ///< nothing more; for a growing trace: nothing more yet
    };

    Kind kind = Kind::END;           ///< what it is
    uint64_t offset = 0;             ///< of the first byte, in the trace
    std::span<const uint8_t> bytes;  ///< valid until the next call; of damage longer than any
                                     ///< message the front alone
    uint64_t length = 0;             ///< all of its bytes
    msgid_t id = MSGID_INVALID;      ///< of a message
    const GpsView* gps = nullptr;    ///< of a GPS message; null of what is none. The reader's,
                                     ///< and like the bytes valid until the next call
    std::string reason;              ///< of damage, for people
    bool reachesEnd = false;         ///< of damage: no message comes behind it
    bool isBefore = false;           ///< begins before the range that is read
};

/// A part of a trace, by offsets.
struct TraceRange {
    uint64_t begin = 0;                                   ///< its first byte
    uint64_t end = std::numeric_limits<uint64_t>::max();  ///< behind its last byte

    /// Whether the items in front of it that had to be read are given, too, marked as such: for
    /// those who carry something from message to message.
    bool givesBefore = false;

    /// So many bytes are read in front of it, to know where messages begin.
    uint64_t lead = uint64_t{1} << 20;
};

/// Reads a trace message by message, in bounded memory and time, and goes on behind damage. The
/// items account for every byte, in order and without overlap. A sound trace has no damage, and the
/// messages of any trace, written back to back, are a sound one, but for some that leave doubt by
/// themselves, such as containers that are cut. A damaged place costs at most the two messages that
/// it touches; of a type other than GPS, whose payload cannot be checked, where five sound messages
/// stand behind it, their stamps with a date or a time of day and minutes apart at most. A size
/// field of such a type may be changed to lead to the end of a later message: nobody can tell that
/// message from one that holds the others.
///
///     MemorySource bytes(trace);
///     TraceReader reader(bytes);
///     for (auto item = reader.next(); item.kind != TraceItem::Kind::END; item = reader.next())
class VEXSTREAM_EXPORT TraceReader {
public:
    /// \param source  read from its current position on; must outlive the reader
    explicit TraceReader(ByteSource& source);

    /// Reads the items that begin in a range: those that a reader of the whole trace gives, so that
    /// ranges that lie back to back can be read side by side, and nothing is lost or doubled. An
    /// item that begins in it is given whole.
    ///
    /// Messages are the same as soon as one stands in front of the range that both take for one;
    /// that is where the trace begins, or one begins beyond doubt within the lead.
    ///
    /// \param source  at the beginning of the trace, which is offset 0; what is not needed is
    ///                passed over with ByteSource::skip() by the first call of next()
    TraceReader(ByteSource& source, const TraceRange& range);

    TraceReader(const TraceReader&) = delete;
    TraceReader(TraceReader&&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;
    TraceReader& operator=(TraceReader&&) = delete;
    ~TraceReader();

    /// \throws what the source throws; what was complete before has been given out. Called again it
    ///         reads on, where the source can, but not where ByteSource::skip() threw.
    TraceItem next();

    /// Passes over a message where its bytes are the next ones of the range: much faster than
    /// next(), for those who know what comes. Otherwise, and within damage, nothing changes.
    ///
    /// \param message  a whole one, which decodes where it is a GPS message
    /// \return whether it was passed over
    bool passOver(std::span<const uint8_t> message);

    /// Whether a sound message was found yet. A trace without any is none.
    bool foundMessage() const;

    /// Behind the last item read or passed over; where a whole trace is read, the bytes of all.
    uint64_t position() const;

    /// For a trace that grows: an incomplete message at the end is left for the next call of
    /// next(), which answers END meanwhile. A message that is complete waits for nothing behind it.
    /// What is incomplete may be taken away from the file, as a recorder does that continues it.
    /// Of what is no trace more may be taken for messages than where all of it is there.
    void setGrowing(bool growing);

    /// For callers that must come to an end quickly: asked once in some thousand bytes while
    /// damage is passed over. Where it says true, next() answers END, and goes on where it was when
    /// it is called again.
    void setStop(std::function<bool()> stop);

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace vextrace
