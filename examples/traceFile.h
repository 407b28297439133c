/// \file
/// Trace files: serialised messages back to back, nothing before, between or behind them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"

/// The byte-array form of a message, as it stands in a trace file.
/// \throws InvalidMessageException when the message is too long for its size field
std::vector<uint8_t> serialise(const MessageBase& message);

/// The bytes that a message takes behind its size field.
size_t sizeOf(const MessageBase& message);

/// Stores one more sentence.
/// \return false, with the message as it was, when it holds a sentence of the same code
bool addSentence(GPSTraceMessage& gps, const std::string& sentence);

/// Splits the sentences of a decoded message into their fields. Decoding leaves that out where the
/// message holds a single sentence.
void splitFields(GPSTraceMessage& gps);

/// Not all of a trace file could be read; the text names file, byte and reason.
class DamagedTrace : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the GPS messages of a trace file one after the other. Loggers record many buses into one
/// file, so messages of unknown types are passed over, and reported when all others are read.
class TraceReader {
public:
    /// Reads the whole file into memory.
    /// \param path  the file, "-" for standard input
    /// \throws UsageError when it cannot be read
    explicit TraceReader(const std::string& path);

    /// The next message; null behind the last one.
    /// \throws DamagedTrace when no message can be made of the bytes behind position(); instead of
    ///         returning null, when messages were passed over
    std::unique_ptr<GPSTraceMessage> next();

    /// The byte in the file at which the message that next() gave last begins.
    size_t position() const { return begin; }

    /// The bytes of that message in the file.
    std::vector<uint8_t> bytes() const { return {content.data() + begin, content.data() + end}; }

private:
    std::unique_ptr<MessageBase> decode();  // null when the message was passed over
    void passOver(const InvalidMessageException& error, size_t bytesLeft);
    DamagedTrace damage(const std::string& reason) const;

    std::string name;
    std::vector<uint8_t> content;
    size_t begin = 0;
    size_t end = 0;
    size_t passedOver = 0;
    std::string firstPassedOver;
};
