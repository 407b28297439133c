#pragma once

#include <string>

#include "libvextrace/GPSTraceMessage.h"

namespace vextrace::internal {

/// One field of a sentence: its label in the numbered dump, and where it is kept.
template <class Fields>
struct NmeaField {
    const char* label;
    std::string Fields::*member;
};

/// The fields of an RMC sentence in their order.
inline constexpr NmeaField<GPSTraceMessage::gprmc_t> RMC_FIELDS[] = {
    {"1. UTC time = ", &GPSTraceMessage::gprmc_t::timeUTC},
    {"2. Status = ", &GPSTraceMessage::gprmc_t::status},
    {"3. Latitude = ", &GPSTraceMessage::gprmc_t::latitude},
    {"4. Latitude hemisphere = ", &GPSTraceMessage::gprmc_t::latitudeHemisphere},
    {"5. Longitude = ", &GPSTraceMessage::gprmc_t::longitude},
    {"6. Longitude hemisphere = ", &GPSTraceMessage::gprmc_t::longitudeHemisphere},
    {"7. Speed = ", &GPSTraceMessage::gprmc_t::speed},
    {"8. Course = ", &GPSTraceMessage::gprmc_t::course},
    {"9. UTC date = ", &GPSTraceMessage::gprmc_t::dateUTC},
    {"10. Magnetic = ", &GPSTraceMessage::gprmc_t::magneticVariation},
    {"11. Magnetic direction = ", &GPSTraceMessage::gprmc_t::magneticVariationDirection},
    {"12. Mode indicator = ", &GPSTraceMessage::gprmc_t::modeIndicator},
};

/// The fields of a GGA sentence in their order. "delution" and "Geodial" are meant to stay.
inline constexpr NmeaField<GPSTraceMessage::gpgga_t> GGA_FIELDS[] = {
    {"1. UTC time = ", &GPSTraceMessage::gpgga_t::timeUTC},
    {"2. Latitude = ", &GPSTraceMessage::gpgga_t::latitude},
    {"3. Latitude hemisphere = ", &GPSTraceMessage::gpgga_t::latitudeHemisphere},
    {"4. Longitude = ", &GPSTraceMessage::gpgga_t::longitude},
    {"5. Longitude hemisphere = ", &GPSTraceMessage::gpgga_t::longitudeHemisphere},
    {"6. GPS quality indicator = ", &GPSTraceMessage::gpgga_t::gpsQualityIndicator},
    {"7. Number of satellites = ", &GPSTraceMessage::gpgga_t::numberSatellites},
    {"8. Horizontal delution = ", &GPSTraceMessage::gpgga_t::horizontalDelution},
    {"9. Altitude = ", &GPSTraceMessage::gpgga_t::antennaAltitude},
    {"10. Altitude unit = ", &GPSTraceMessage::gpgga_t::antennaAltitudeUnit},
    {"11. Geodial separation = ", &GPSTraceMessage::gpgga_t::geoidalSeparation},
    {"12. Geodial unit = ", &GPSTraceMessage::gpgga_t::geoidalSeparationUnit},
    {"13. Age GPS data = ", &GPSTraceMessage::gpgga_t::ageGPSdata},
    {"14. Reference id = ", &GPSTraceMessage::gpgga_t::referenceId},
};

}  // namespace vextrace::internal
