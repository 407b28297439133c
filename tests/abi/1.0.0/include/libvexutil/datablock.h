/// \file
/// Numbers in byte arrays: big-endian, at any address, the same bytes on every processor.
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
