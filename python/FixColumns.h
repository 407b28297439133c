#pragma once

#include <pybind11/numpy.h>

#include <cstdint>
#include <limits>
#include <optional>

#include "libvexstream/Fix.h"
#include "python/GrowingArray.h"
#include "python/values.h"

namespace vextrace::python {

/// A whole number that may be missing, in the way that numpy and pandas have it: a value and a
/// mask.
template <class T>
class MaskedArray {
public:
    template <class Value>
    void push(const std::optional<Value>& value) {
        values.push(value ? static_cast<T>(*value) : T{1});
        mask.push(!value);
    }

    void append(const MaskedArray& more) {
        values.append(more.values);
        mask.append(more.mask);
    }

    py::tuple take(const char* dtype) {
        return py::make_tuple(values.take(dtype), mask.take("bool"));
    }

private:
    GrowingArray<T> values;
    GrowingArray<bool> mask;
};

/// Fixes as columns.
class FixColumns {
public:
    /// \param itsTrace    number of the trace
    /// \param itsMessage  number of the message in its trace
    void push(const Fix& fix, uint32_t itsTrace, uint64_t itsMessage) {
        trace.push(itsTrace);
        message.push(itsMessage);
        time.push(numpyTime(fix.stamp));
        stamp.push(hasDate(fix.stamp) ? std::optional(fix.stamp) : std::nullopt);
        valid.push(fix.valid);
        latitude.push(fix.latitude.value_or(MISSING));
        longitude.push(fix.longitude.value_or(MISSING));
        altitude.push(fix.altitude.value_or(MISSING));
        speed.push(fix.speed.value_or(MISSING));
        course.push(fix.course.value_or(MISSING));
        satellites.push(fix.satellites);
        quality.push(fix.quality);
        hdop.push(fix.hdop.value_or(MISSING));
        checksum.push(static_cast<int8_t>(fix.checksum()));
    }

    /// \param messagesBefore  of the trace, before those that \p more counts from 1
    void append(const FixColumns& more, uint64_t messagesBefore) {
        trace.append(more.trace);
        const size_t count = message.size();
        message.append(more.message);
        message.add(messagesBefore, count);
        time.append(more.time);
        stamp.append(more.stamp);
        valid.append(more.valid);
        latitude.append(more.latitude);
        longitude.append(more.longitude);
        altitude.append(more.altitude);
        speed.append(more.speed);
        course.append(more.course);
        satellites.append(more.satellites);
        quality.append(more.quality);
        hdop.append(more.hdop);
        checksum.append(more.checksum);
    }

    /// As numpy has them; none are left here.
    py::dict take() {
        using namespace py::literals;
        return py::dict(
            "trace"_a = trace.take("uint32"), "message"_a = message.take("uint64"),
            "time_utc"_a = time.take("int64"), "time_ns"_a = stamp.take("uint64"),
            "valid"_a = valid.take("bool"), "latitude_deg"_a = latitude.take("double"),
            "longitude_deg"_a = longitude.take("double"), "altitude_m"_a = altitude.take("double"),
            "speed_kmh"_a = speed.take("double"), "course_deg"_a = course.take("double"),
            "satellites"_a = satellites.take("uint16"), "quality"_a = quality.take("uint16"),
            "hdop"_a = hdop.take("double"), "checksum"_a = checksum.take("int8"));
    }

private:
    static constexpr double MISSING = std::numeric_limits<double>::quiet_NaN();

    GrowingArray<uint32_t> trace;
    GrowingArray<uint64_t> message;
    GrowingArray<int64_t> time;
    MaskedArray<uint64_t> stamp;
    GrowingArray<bool> valid;
    GrowingArray<double> latitude;
    GrowingArray<double> longitude;
    GrowingArray<double> altitude;
    GrowingArray<double> speed;
    GrowingArray<double> course;
    MaskedArray<uint16_t> satellites;
    MaskedArray<uint16_t> quality;
    GrowingArray<double> hdop;
    GrowingArray<int8_t> checksum;
};

}  // namespace vextrace::python
