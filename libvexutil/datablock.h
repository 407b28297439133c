/// \file
/// Numbers in byte arrays: big-endian, at any address, the same bytes on every processor.
///
/// The namespace vextrace has a function of each width. Those of 16 and 64 bits are global, too.
#pragma once

#include <cstdint>

#include "libvexutil/visibility.h"

/// Reads the 2 bytes at \p source, most significant first.
VEXUTIL_EXPORT uint16_t byteArrayToUint16(const uint8_t* source);

/// Reads the 8 bytes at \p source, most significant first.
VEXUTIL_EXPORT uint64_t byteArrayToUint64(const uint8_t* source);

/// Writes \p value to the 2 bytes at \p dest, most significant first.
VEXUTIL_EXPORT void uint16ToByteArray(uint16_t value, uint8_t* dest);

/// Writes \p value to the 8 bytes at \p dest, most significant first.
VEXUTIL_EXPORT void uint64ToByteArray(uint64_t value, uint8_t* dest);

namespace vextrace {

using ::byteArrayToUint16;
using ::byteArrayToUint64;
using ::uint16ToByteArray;
using ::uint64ToByteArray;

/// Reads the byte at \p source. There so that records can be read alike, whatever their width.
VEXUTIL_EXPORT uint8_t byteArrayToUint8(const uint8_t* source);

/// Reads the 4 bytes at \p source, most significant first.
VEXUTIL_EXPORT uint32_t byteArrayToUint32(const uint8_t* source);

/// Writes \p value to the byte at \p dest.
VEXUTIL_EXPORT void uint8ToByteArray(uint8_t value, uint8_t* dest);

/// Writes \p value to the 4 bytes at \p dest, most significant first.
VEXUTIL_EXPORT void uint32ToByteArray(uint32_t value, uint8_t* dest);

}  // namespace vextrace
