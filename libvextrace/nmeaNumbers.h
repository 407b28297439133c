/// \file
/// The numbers of a sentence that no message holds.
#pragma once

#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/visibility.h"

namespace vextrace {

/// Reads the numbers of an RMC sentence, bit for bit as GPSTraceMessage::getGPRMC() reads those of
/// the one that is held.
///
/// \param sentence  with its line end or without; its first field is not looked at
/// \param gprmc     every member is written, missing fields as zeros
/// \throws std::bad_alloc  as getGPRMC() does
VEXTRACE_EXPORT void readNumbers(std::string_view sentence,
                                 GPSTraceMessage::numeric_gprmc_t& gprmc);

/// Reads the numbers of a GGA sentence, as GPSTraceMessage::getGPGGA() does.
VEXTRACE_EXPORT void readNumbers(std::string_view sentence,
                                 GPSTraceMessage::numeric_gpgga_t& gpgga);

}  // namespace vextrace
