/// \file
/// Date and time of day of NMEA sentences, as time stamps.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "libvextrace/GPSTraceMessage.h"

/// Of hhmmss, with or without a fraction; empty when it is no time of day.
std::optional<uint64_t> nanosecondsOfDay(const std::string& text);

/// Nanoseconds since 1970, for dates from 1980 to 2079; empty when there is no date or no time.
std::optional<timeStamp_t> utcOf(const GPSTraceMessage::gprmc_t& rmc);
