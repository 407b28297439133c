#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"

/// A few sentences that many tests speak of.
inline const std::string RMC_SENTENCE =
    "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A";
inline const std::string GGA_SENTENCE =
    "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47";

using Bytes = std::vector<uint8_t>;

/// The bytes of a text, NUL bytes included.
Bytes bytesOf(std::string_view text);

/// The serialised message, written with exactly the room that it needs.
Bytes writtenBytes(const MessageBase& message);

/// A header in front of a payload; the size field fits, id 22.
Bytes serialised(uint16_t reserved, timeStamp_t timeStamp, std::string_view payload);

/// The message that the factory decodes from all of the bytes as a GPSTraceMessage; fails the test
/// and returns null where there is none.
std::unique_ptr<GPSTraceMessage> rebuild(const Bytes& bytes);

/// The stored sentences in key order, as the payload of the serialised message tells.
std::string payloadOf(const MessageBase& message);
