#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"

namespace vextrace {

/// The code of a sentence without NUL bytes, as a number: these have the order of the texts.
inline uint64_t codeNumber(std::string_view sentence) {
    constexpr size_t SIZE = GPSTraceMessage::NMEA_CODE_SIZE;
    uint64_t number = 0;
    for (size_t i = 0; i < SIZE; ++i) {
        number = number << 8 | (i < sentence.size() ? static_cast<unsigned char>(sentence[i]) : 0U);
    }
    return number;
}

}  // namespace vextrace
