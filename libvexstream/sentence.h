#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "libvexstream/visibility.h"

namespace vextrace {

/// Bytes of sentences, with their line feeds, that one message can hold: its size field has 16 bits
/// and counts 12 bytes of the header, too.
constexpr size_t MESSAGE_ROOM = 65535 - 12;

/// What a sentence's checksum says.
enum class Checksum { NONE, WRONG, RIGHT };

/// The checksum of what stands between the "$" and the "*" of a sentence: the exclusive or of its
/// bytes.
VEXSTREAM_EXPORT uint8_t checksumOf(std::string_view content);

/// A sentence as receivers send it: "$", the content, "*" and the checksum in two digits, CR, LF.
///
/// \param content  address and fields, "GPRMC,123519,A,..."; printable ASCII
/// \throws std::invalid_argument where the content has other bytes, or "$", "!" or "*", which
///         begin and end sentences
VEXSTREAM_EXPORT std::string makeSentence(std::string_view content);

/// Verdict on a sentence as it was received, from its "$" or "!", with or without its line end.
/// NONE where it does not end in "*hh".
VEXSTREAM_EXPORT Checksum receivedChecksum(std::string_view sentence);

/// What is thought of a sentence that a message stores.
struct Verdict {
    Checksum checksum = Checksum::NONE;  ///< as the receiver sent it
    char talker = 'P';  ///< behind "$G" as it was sent, where the right checksum tells another
};

/// Verdict on a sentence as a message stores it: behind "$G" any talker may have become GP, so the
/// checksum is right when it is that of one of the talkers that begin with G. TalkerMemory knows
/// more.
VEXSTREAM_EXPORT Verdict storedVerdict(std::string_view sentence);

/// The same, of the checksum alone.
inline Checksum storedChecksum(std::string_view sentence) {
    return storedVerdict(sentence).checksum;
}

/// The sentence without its line feed and the carriage returns before it.
VEXSTREAM_EXPORT std::string_view withoutLineEnd(std::string_view sentence);

/// Field \p index of the sentence (0 is its address, "$GPRMC"), up to the next comma or "*" or the
/// line end; empty where there is none.
VEXSTREAM_EXPORT std::string_view field(std::string_view sentence, size_t index);

/// A time of day as a receiver sends it, hhmmss or hhmmss.s...; 23:59:60 included.
struct VEXSTREAM_EXPORT TimeOfDay {
    uint64_t nanoseconds;  ///< since midnight; up to 86,400.999999999 s in a leap second
    std::string digits;    ///< hhmmss and the fraction without zeros at its end: equal numbers have
                           ///< equal digits

    /// The time that a text is, whole; nothing where it is none.
    static std::optional<TimeOfDay> parse(std::string_view text);

    /// Whether both are the same number, however many zeros were sent behind it.
    bool operator==(const TimeOfDay& other) const { return digits == other.digits; }
};

/// The field with the time of day, whatever it holds, of a sentence that timeOf() knows; empty for
/// every other.
VEXSTREAM_EXPORT std::string_view timeField(std::string_view sentence);

/// The time of a timed sentence: RMC, GGA, GNS, GLL, ZDA, GST or GBS of any talker but the
/// proprietary ones, with a valid time. Nothing for every other sentence.
VEXSTREAM_EXPORT std::optional<TimeOfDay> timeOf(std::string_view sentence);

/// The date of an RMC or ZDA sentence of any talker, where it has a valid one. Day and month of ZDA
/// may have one digit.
VEXSTREAM_EXPORT std::optional<std::chrono::sys_days> dateOf(std::string_view sentence);

}  // namespace vextrace
