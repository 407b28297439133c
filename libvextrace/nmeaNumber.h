#pragma once

#include <cstdint>
#include <string_view>

namespace vextrace {

/// What strtol (base 10) makes of a field's text.
long nmeaInteger(std::string_view text);

/// Converts field texts exactly as strtod and strtol (base 10) do, bit for bit and in every locale,
/// but fast where the text is plain digits with at most one point.
class NmeaNumberReader {
public:
    struct Number {
        long integer;
        double real;
    };

    /// Looks up the C locale's decimal point, for all conversions with this reader.
    NmeaNumberReader();

    /// What strtol and strtod make of the text.
    Number read(std::string_view text) const;

    double real(std::string_view text) const { return read(text).real; }

private:
    bool pointIsFullStop;
};

/// A coordinate ddmm.mmm or dddmm.mmm taken apart.
struct NmeaCoordinate {
    uint16_t deg;  ///< whole degrees; 16 bits are meant, absurd values wrap
    double rem;    ///< minutes

    NmeaCoordinate(const NmeaNumberReader& reader, std::string_view text);

    double degrees() const;
};

}  // namespace vextrace
