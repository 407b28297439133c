#pragma once

#include <string>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"

namespace vextrace::tools {

/// The sentence as a message stores it: any talker that begins with G becomes GP, and the end is a
/// line feed.
inline std::string storedText(std::string_view received) {
    std::string stored(received);
    if (stored.starts_with("$G")) {
        stored[2] = 'P';
    }
    if (!stored.ends_with('\n')) {
        stored += '\n';
    }
    return stored;
}

/// The code under which a message stores the sentence.
inline std::string storedCode(std::string_view received) {
    return storedText(received.substr(0, GPSTraceMessage::NMEA_CODE_SIZE))
        .substr(0, GPSTraceMessage::NMEA_CODE_SIZE);
}

}  // namespace vextrace::tools
