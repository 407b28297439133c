#pragma once

#include <algorithm>
#include <cstddef>
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

/// Whether that is what a message stores of the sentence.
inline bool isStoredAs(std::string_view received, std::string_view stored) {
    const size_t size = received.size() - (received.ends_with('\n') ? 1 : 0);
    const size_t talker = received.starts_with("$G") ? std::min<size_t>(size, 3) : 0;
    return stored.size() == size + 1 && stored.back() == '\n' &&
           stored.starts_with(std::string_view("$GP").substr(0, talker)) &&
           stored.substr(talker, size - talker) == received.substr(talker, size - talker);
}

/// The code under which a message stores the sentence.
inline std::string storedCode(std::string_view received) {
    return storedText(received.substr(0, GPSTraceMessage::NMEA_CODE_SIZE))
        .substr(0, GPSTraceMessage::NMEA_CODE_SIZE);
}

}  // namespace vextrace::tools
