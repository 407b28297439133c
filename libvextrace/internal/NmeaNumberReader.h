#pragma once

#include <string_view>

namespace vextrace::internal {

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

    /// What strtod makes of the text.
    double real(std::string_view text) const { return read(text).real; }

    /// What strtol makes of the text; needs no decimal point and so no reader.
    static long integer(std::string_view text);

private:
    bool pointIsFullStop;
};

}  // namespace vextrace::internal
