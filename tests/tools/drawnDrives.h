#pragma once

#include <functional>
#include <string>
#include <vector>

#include "libvextrace/serialise.h"
#include "tools/report/Drive.h"

namespace vextrace::tools {

/// A valid fix with all values.
inline Fix fixAt(timeStamp_t stamp, double speed = 50) {
    Fix fix;
    fix.stamp = stamp;
    fix.valid = true;
    fix.latitude = 48;
    fix.longitude = 11;
    fix.speed = speed;
    fix.altitude = 500;
    fix.satellites = 9;
    fix.quality = 1;
    return fix;
}

/// A message in its byte-array form.
inline std::vector<uint8_t> messageAt(timeStamp_t stamp,
                                      const std::string& sentence = "$GPRMC,,A*00") {
    return serialise(GPSTraceMessage(stamp, sentence));
}

/// A valid fix at a place.
inline Fix placeAt(double latitude, double longitude, std::optional<double> speed = std::nullopt) {
    Fix fix;
    fix.stamp = 1;
    fix.valid = true;
    fix.latitude = latitude;
    fix.longitude = longitude;
    fix.speed = speed;
    return fix;
}

/// Draws drives of these fixes; lines are open over \p gap nanoseconds.
inline std::vector<DrawnDrive> drawn(const std::vector<std::vector<Fix>>& drives,
                                     timeStamp_t gap = 5'000'000'000, uint64_t most = 1000) {
    std::vector<Outline> outlines;
    for (const std::vector<Fix>& fixes : drives) {
        outlines.emplace_back(gap);
        for (const Fix& fix : fixes) {
            outlines.back().add(fix);
        }
    }
    Division division(outlines, most);
    std::vector<DrawnDrive> result;
    for (size_t i = 0; i < drives.size(); ++i) {
        Drive drive(outlines[i], division, gap, 1000);
        for (size_t number = 0; number < drives[i].size(); ++number) {
            const Fix& fix = drives[i][number];
            drive.add(fix, messageAt(fix.stamp), number + 1);
        }
        result.push_back(drive.finish());
    }
    return result;
}

}  // namespace vextrace::tools
