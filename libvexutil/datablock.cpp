#include "libvexutil/datablock.h"

namespace {

template <class Number>
Number read(const uint8_t* source) {
    uint64_t value = 0;
    for (unsigned i = 0; i < sizeof(Number); ++i) {
        value = (value << 8) | source[i];
    }
    return static_cast<Number>(value);
}

template <class Number>
void write(Number value, uint8_t* dest) {
    for (unsigned i = 0; i < sizeof(Number); ++i) {
        const unsigned shift = 8 * (static_cast<unsigned>(sizeof(Number)) - 1 - i);
        dest[i] = static_cast<uint8_t>(value >> shift);
    }
}

}  // namespace

uint16_t byteArrayToUint16(const uint8_t* source) {
    return read<uint16_t>(source);
}

uint64_t byteArrayToUint64(const uint8_t* source) {
    return read<uint64_t>(source);
}

void uint16ToByteArray(uint16_t value, uint8_t* dest) {
    write(value, dest);
}

void uint64ToByteArray(uint64_t value, uint8_t* dest) {
    write(value, dest);
}

namespace vextrace {

uint8_t byteArrayToUint8(const uint8_t* source) {
    return read<uint8_t>(source);
}

uint32_t byteArrayToUint32(const uint8_t* source) {
    return read<uint32_t>(source);
}

void uint8ToByteArray(uint8_t value, uint8_t* dest) {
    write(value, dest);
}

void uint32ToByteArray(uint32_t value, uint8_t* dest) {
    write(value, dest);
}

}  // namespace vextrace
