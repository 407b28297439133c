#pragma once

#include <cstdint>
#include <cstring>

/// The bits of a number: tells apart what compares equal, and equals itself where NaN does not.
inline uint64_t bitsOf(double number) {
    static_assert(sizeof(uint64_t) == sizeof(double));
    uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}
