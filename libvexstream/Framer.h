#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "libvexstream/sentence.h"
#include "libvexstream/visibility.h"

namespace vextrace {

/// Finds the sentences in what a receiver sent, whatever else is among it: binary protocols, time
/// stamps, sentences that were cut off.
///
/// A checked sentence is a run of bytes without CR, LF and NUL that begins with "$" or "!" and ends
/// in "*hh", its right checksum. It is found wherever it stands; of several starts that fit one
/// "*hh", the last counts. The carriage returns behind it that lead to a line feed, and that line
/// feed, belong to it. A line without any checked sentence is a sentence as it stands, when it
/// begins with "$" or "!" and is printable ASCII up to its carriage returns. What a message cannot
/// hold or give back is no sentence; it is skipped, as everything else is.
///
///     framer.feed(bytes);
///     while (const auto sentence = framer.next()) { ... }
///
/// The bytes may come in any pieces. Time is linear in their number, memory does not depend on it.
class VEXSTREAM_EXPORT Framer {
public:
    /// A sentence that was found.
    struct Sentence {
        std::string_view text;  ///< as it was received, with its line end if it has one; valid
                                ///< until the next call of next() or feed()
        uint64_t offset;        ///< of its first byte in all that was fed
        Checksum checksum;      ///< RIGHT of a checked sentence; of a line as it stands WRONG where
                                ///< it ends in "*hh", else NONE
    };

    /// What was found, by its checksums, and in how many bytes.
    struct Counters {
        uint64_t checked = 0;        ///< sentences with a right checksum
        uint64_t wrong = 0;          ///< sentences with a wrong one
        uint64_t unchecked = 0;      ///< sentences without any
        uint64_t bytesRead = 0;      ///< all that were fed
        uint64_t bytesRecorded = 0;  ///< bytes of all sentences, line ends included

        /// All of them.
        uint64_t sentences() const { return checked + wrong + unchecked; }

        /// What belongs to no sentence.
        uint64_t bytesSkipped() const { return bytesRead - bytesRecorded; }
    };

    Framer();

    /// More bytes; to be called when next() has nothing more.
    /// \param bytes  must stay as they are until next() answers nothing
    void feed(std::string_view bytes);

    /// Nothing follows: what waits for more bytes comes out of next().
    void finish() { finished = true; }

    /// The next sentence; nothing where more bytes are needed to know it.
    std::optional<Sentence> next();

    /// Of the sentences given out so far. Bytes that wait for more count as skipped.
    const Counters& counters() const { return count; }

private:
    bool refill();
    std::optional<Sentence> scan();
    void passOrdinary();
    bool mustWait() const;
    void addToSum();
    void passCarriageReturn();
    bool findChecked();
    std::optional<Sentence> endChecked();
    std::optional<Sentence> endLine();
    void beginLine();
    Sentence give(uint64_t begin, uint64_t end, Checksum checksum);

    bool isKnown(uint64_t offset) const { return offset < bufferEnd; }
    char at(uint64_t offset) const { return buffer[offset - bufferBegin]; }
    std::string_view text(uint64_t begin, uint64_t end) const {
        return {buffer.data() + (begin - bufferBegin), end - begin};
    }

    std::string_view input;  // not in the buffer yet
    bool finished = false;

    // All positions count from the first byte fed.
    std::vector<char> buffer;
    uint64_t bufferBegin = 0;
    uint64_t bufferEnd = 0;
    uint64_t position = 0;   // of the next byte to look at
    uint64_t lineBegin = 0;  // behind the last line feed
    bool lineStands = true;  // no reason yet why the line is no sentence as it stands
    uint64_t runBegin = 0;   // no checked sentence begins before it

    // The exclusive or of the bytes before the position; and, for each of its values, where it was
    // that last right behind a start.
    uint8_t sum = 0;
    std::array<uint64_t, 256> starts = {};

    // A checked sentence whose line end is not known yet.
    bool checkedWaits = false;
    uint64_t checkedBegin = 0;
    uint64_t checkedEnd = 0;

    Counters count;
};

}  // namespace vextrace
