#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "libvexstream/visibility.h"
#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/InvalidMessageException.h"

namespace vextrace {

/// The sentences of a GPS message, read where they lie: in the bytes of a trace, or in a message.
/// Nothing is copied, and a view that is used for message after message allocates next to nothing.
/// Valid as long as those bytes, or that message.
///
///     for (const std::string_view sentence : view.getSentences()) { ... }
class VEXSTREAM_EXPORT GpsView {
public:
    /// Of no sentences, time stamp 0.
    GpsView() = default;

    /// Of a message, which must outlive the view and not change meanwhile.
    // A view stands for its message.
    // cppcheck-suppress noExplicitConstructor
    GpsView(const GPSTraceMessage& message);  // NOLINT(google-explicit-constructor)

    /// Views another message in its byte-array form. Where its payload is what the library writes
    /// (lines in strictly ascending order of their codes, none empty, each with its line feed, each
    /// talker that begins with G already GP, no NUL byte), it is read in place. Every other one is
    /// decoded by the library; the view keeps what comes of it.
    ///
    /// \param message  all bytes of a GPS message; they must outlive the view
    /// \return nothing, or why these bytes are none, by their size field, their id or because the
    ///         library does not decode them; the view is then of no sentences
    std::optional<InvalidMessageException> read(std::span<const uint8_t> message);

    /// The same of a message that can be read in place; decodes none.
    /// \return false where it is no such message; the view is then of no sentences
    bool readInPlace(std::span<const uint8_t> message);

    /// See MessageBase.
    timeStamp_t getTimeStamp() const { return stamp; }

    /// See MessageBase.
    uint16_t getHeaderReserved() const { return headerReserved; }

    /// The sentence of this code as the message stores it, with its line feed; empty when there is
    /// none.
    std::string_view getSentence(std::string_view code) const;

    /// All sentences in the order of their codes, as the message stores them.
    std::span<const std::string_view> getSentences() const { return sentences; }

    /// Whether there is a sentence of this type; false for values outside the enumeration.
    bool hasNmeaDataType(GPSTraceMessage::nmeaDataType_t type) const;

    /// The message itself, for what a view has not: fields, numbers, texts. It is the one that the
    /// library decodes, or a copy of the one viewed.
    GPSTraceMessage message() const;

    /// The code of a stored sentence: its first characters, of which it may have fewer than six.
    static std::string_view codeOf(std::string_view sentence) {
        return sentence.substr(0, GPSTraceMessage::NMEA_CODE_SIZE);
    }

private:
    void view(const GPSTraceMessage& message);

    timeStamp_t stamp = 0;
    uint16_t headerReserved = 0;
    std::vector<std::string_view> sentences;
    std::span<const uint8_t> bytes;            // that hold them
    const GPSTraceMessage* holder = nullptr;   // that holds them, where it is not those bytes
    std::unique_ptr<GPSTraceMessage> decoded;  // the holder, where it was made for this view
};

}  // namespace vextrace
