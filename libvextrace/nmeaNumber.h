#pragma once

#include <cstdint>
#include <string_view>

/// What strtol (base 10) and strtod make of a text.
struct NmeaNumber {
    long integer = 0;
    double real = 0;
};

/// Converts field texts exactly as strtol (base 10) and strtod do, bit for bit and in every locale,
/// but fast where the text is plain digits with at most one point.
class NmeaNumberReader {
public:
    /// Looks up the C locale's decimal point, for all conversions with this reader.
    NmeaNumberReader();

    static long integer(std::string_view text);
    NmeaNumber read(std::string_view text) const;
    double real(std::string_view text) const;

private:
    bool pointIsFullStop;
};

/// A coordinate ddmm.mmm or dddmm.mmm taken apart. The 16 bits of the degrees are meant: traces
/// are compared with those of older recorders, which wrap absurd values in this way.
struct NmeaCoordinate {
    uint16_t deg;  ///< whole degrees, modulo 65536
    double rem;    ///< minutes

    NmeaCoordinate(const NmeaNumberReader& number, std::string_view text);

    double degrees() const;
};
