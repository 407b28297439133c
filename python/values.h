#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "libvexstream/Fix.h"
#include "libvexstream/sentence.h"
#include "libvexstream/utc.h"

namespace vextrace::python {

namespace py = pybind11;

/// Text of a receiver as a str: what is no UTF-8 becomes surrogates, as in the names of files.
inline py::str textOf(std::string_view bytes) {
    PyObject* text = PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()),
                                          "surrogateescape");
    if (text == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::str>(text);
}

/// The same as numpy.datetime64.
py::object timeOfStamp(timeStamp_t stamp);

/// A stamp as numpy counts it, nanoseconds since 1970; its NaT where it is no time, or lies behind
/// 2262-04-11, which is the last that numpy has.
inline int64_t numpyTime(timeStamp_t stamp) {
    constexpr auto LAST = static_cast<timeStamp_t>(std::numeric_limits<int64_t>::max());
    return hasDate(stamp) && stamp <= LAST ? static_cast<int64_t>(stamp)
                                           : std::numeric_limits<int64_t>::min();
}

/// As tables name it.
inline const char* nameOf(Checksum checksum) {
    return checksum == Checksum::RIGHT ? "right" : checksum == Checksum::WRONG ? "wrong" : "none";
}

/// None where it is missing.
template <class T>
py::object valueOf(const std::optional<T>& value) {
    return value ? py::cast(*value) : py::none();
}

}  // namespace vextrace::python
