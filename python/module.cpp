/// \file
/// The part of the Python package vextrace that is C++.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <chrono>
#include <string>
#include <vector>

#include "libvexstream/Recording.h"
#include "libvexstream/utc.h"
#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/version.h"
#include "python/parts.h"
#include "python/values.h"

namespace vextrace::python {

py::object timeOfStamp(timeStamp_t stamp) {
    // Never released: at the end there is no interpreter left to release it.
    static const auto* const datetime64 =
        new py::object(py::module_::import("numpy").attr("datetime64"));
    return (*datetime64)(numpyTime(stamp), "ns");
}

namespace {

std::vector<uint8_t> recorded(std::string_view log, std::chrono::sys_days date) {
    Recording recording(StampSource::SENTENCES, date);
    std::vector<uint8_t> trace;
    const auto append = [&trace](const EpochBuilder::Part& part) {
        trace.insert(trace.end(), part.bytes.begin(), part.bytes.end());
    };
    recording.feed(log);
    recording.finish();
    while (const std::optional<Recording::Step> step = recording.next()) {
        append(step->part);
    }
    append(recording.take());
    return trace;
}

py::bytes record(const py::buffer& log, const std::string& date) {
    std::chrono::sys_days day;
    if (!date.empty()) {
        const std::optional<std::chrono::sys_days> given = parseDate(date);
        if (!given) {
            throw py::value_error("no day such as 2026-11-21: " + date);
        }
        day = *given;
    }
    const py::buffer_info info = log.request();
    if (info.ndim != 1 || info.itemsize != 1) {
        throw py::type_error("a log is bytes");
    }
    std::vector<uint8_t> trace;
    {
        const py::gil_scoped_release unlocked;
        trace = recorded({static_cast<const char*>(info.ptr), static_cast<size_t>(info.size)}, day);
    }
    return {reinterpret_cast<const char*>(trace.data()), trace.size()};
}

std::string versionText() {
    const int version = vextrace::version();
    return std::to_string(version / 10000) + '.' + std::to_string(version / 100 % 100) + '.' +
           std::to_string(version % 100);
}

// A time of the command line's form, as nanoseconds since 1970.
timeStamp_t stampOfText(const std::string& text) {
    const std::optional<timeStamp_t> stamp = parseUtc(text);
    if (!stamp) {
        throw py::value_error("no time such as 2026-11-21T12:35:19.5Z: " + text);
    }
    return *stamp;
}

}  // namespace

}  // namespace vextrace::python

PYBIND11_MODULE(_vextrace, module) {
    using namespace vextrace::python;
    using namespace py::literals;
    py::register_exception_translator([](std::exception_ptr error) {
        try {
            std::rethrow_exception(error);
        } catch (const InvalidMessageException& refusal) {
            PyErr_SetString(PyExc_ValueError, refusal.what());
        }
    });
    GPSTraceMessage::registerMessage();
    module.attr("__version__") = versionText();
    addMessage(module);
    addReading(module);
    addFixTable(module);
    module.def("_record", &record, "log"_a, "date"_a);
    module.def("_stamp", &stampOfText, "text"_a);
}
