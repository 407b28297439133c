#pragma once

#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"

using Texts = std::vector<std::string>;

/// The twelve fields in the order of the sentence. A structure of another number of fields does
/// not compile.
inline Texts fieldTexts(const GPSTraceMessage::gprmc_t& fields) {
    const auto& [a, b, c, d, e, f, g, h, i, j, k, l] = fields;
    return {a, b, c, d, e, f, g, h, i, j, k, l};
}

/// The fourteen fields, likewise.
inline Texts fieldTexts(const GPSTraceMessage::gpgga_t& fields) {
    const auto& [a, b, c, d, e, f, g, h, i, j, k, l, m, n] = fields;
    return {a, b, c, d, e, f, g, h, i, j, k, l, m, n};
}
