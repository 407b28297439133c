#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "libvexstream/FixChooser.h"
#include "libvexstream/TraceReader.h"
#include "libvexstream/utc.h"
#include "python/GrowingArray.h"
#include "python/parts.h"
#include "python/sources.h"
#include "python/values.h"

namespace vextrace::python {

namespace {

// A whole number that may be missing, in the way that numpy and pandas have it: a value and a mask.
template <class T>
class MaskedArray {
public:
    template <class Value>
    void push(const std::optional<Value>& value) {
        values.push(value ? static_cast<T>(*value) : T{1});
        mask.push(!value);
    }

    py::tuple take(const char* dtype) {
        return py::make_tuple(values.take(dtype), mask.take("bool"));
    }

private:
    GrowingArray<T> values;
    GrowingArray<bool> mask;
};

// What was found in a trace.
struct Findings {
    uint64_t bytes = 0;
    uint64_t messages = 0;
    uint64_t places = 0;        // of damage
    uint64_t damagedBytes = 0;  // in all of them
    uint64_t firstDamage = 0;   // offset
    std::string firstReason;
    bool isTrace = false;  // holds a message, or no bytes at all
};

TraceRange rangeOf(uint64_t begin, std::optional<uint64_t> end) {
    TraceRange range;
    range.begin = begin;
    range.end = end.value_or(range.end);
    range.givesBefore = true;
    return range;
}

// The fixes of traces as columns.
class FixTable {
public:
    FixTable(timeStamp_t from, timeStamp_t until, bool unchecked)
        : choice{from, until, unchecked} {}

    Findings add(const py::object& source, uint32_t number, uint64_t begin,
                 std::optional<uint64_t> end) {
        const Use use(inUse);
        Input input(source);
        const Unlocked unlocked(!input.callsPython());
        return read(input.bytes(), number, rangeOf(begin, end));
    }

    py::dict take() {
        const Use use(inUse);
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
    Findings read(ByteSource& bytes, uint32_t number, const TraceRange& range) {
        TraceReader reader(bytes, range);
        FixChooser chooser(choice);
        Findings findings;
        for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END;
             item = reader.next()) {
            addItem(item, number, chooser, findings);
        }
        findings.isTrace = reader.foundMessage() || findings.places == 0;
        return findings;
    }

    void addItem(const TraceItem& item, uint32_t number, FixChooser& chooser, Findings& findings) {
        const bool isTaken =
            item.gps != nullptr && chooser.choose(*item.gps) == FixChooser::Outcome::TAKEN;
        if (item.isBefore) {
            return;
        }
        findings.bytes += item.length;
        if (item.kind == TraceItem::Kind::DAMAGE) {
            addDamage(item, findings);
            return;
        }
        ++findings.messages;
        if (isTaken) {
            trace.push(number);
            message.push(findings.messages);
            push(chooser.fix());
        }
    }

    static void addDamage(const TraceItem& item, Findings& findings) {
        if (findings.places == 0) {
            findings.firstDamage = item.offset;
            findings.firstReason = item.reason;
        }
        ++findings.places;
        findings.damagedBytes += item.length;
    }

    void push(const Fix& fix) {
        const std::optional<timeStamp_t> dated =
            hasDate(fix.stamp) ? std::optional(fix.stamp) : std::nullopt;
        stamp.push(dated);
        time.push(numpyTime(fix.stamp));
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

    static constexpr double MISSING = std::numeric_limits<double>::quiet_NaN();

    const FixChoice choice;
    bool inUse = false;
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

}  // namespace

void addFixTable(py::module_& module) {
    using namespace py::literals;
    py::class_<Findings> findings(module, "_Findings", py::is_final());
    findings.def_readonly("bytes", &Findings::bytes)
        .def_readonly("messages", &Findings::messages)
        .def_readonly("places", &Findings::places)
        .def_readonly("damaged_bytes", &Findings::damagedBytes)
        .def_readonly("first_damage", &Findings::firstDamage)
        .def_readonly("first_reason", &Findings::firstReason)
        .def_readonly("is_trace", &Findings::isTrace);
    py::class_<FixTable> tables(module, "_FixTable", py::is_final());
    tables.def(py::init<timeStamp_t, timeStamp_t, bool>(), "from_"_a, "until"_a, "unchecked"_a)
        .def("add", &FixTable::add, "source"_a, "number"_a, "begin"_a = 0, "end"_a = py::none())
        .def("take", &FixTable::take);
    constructNever(findings);
    constructByNew(tables);
}

}  // namespace vextrace::python
