#pragma once

#include <cstdint>
#include <string_view>

#include "libvextrace/internal/NmeaNumberReader.h"

namespace vextrace::internal {

/// A coordinate ddmm.mmm or dddmm.mmm taken apart.
struct NmeaCoordinate {
    uint16_t deg;  ///< whole degrees; 16 bits are meant, absurd values wrap
    double rem;    ///< minutes

    NmeaCoordinate(const NmeaNumberReader& reader, std::string_view text);

    double degrees() const;
};

}  // namespace vextrace::internal
