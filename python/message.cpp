#include <pybind11/operators.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "libvexstream/Fix.h"
#include "libvexstream/GpsView.h"
#include "libvexstream/utc.h"
#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/serialise.h"
#include "python/parts.h"
#include "python/values.h"

namespace vextrace::python {

namespace {

using State = std::tuple<timeStamp_t, uint16_t, uint32_t, std::vector<py::bytes>>;

py::bytes bytesOf(const GPSTraceMessage& message) {
    const std::vector<uint8_t> bytes = serialise(message);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

GPSTraceMessage fromBytes(const py::bytes& bytes) {
    const std::string_view text = bytes;
    const auto* const data = reinterpret_cast<const uint8_t*>(text.data());
    DecodedMessage decoded = MessageFactory::decode(data, text.size());
    if (decoded.error) {
        throw *decoded.error;
    }
    auto* const message = dynamic_cast<GPSTraceMessage*>(decoded.message.get());
    if (message == nullptr) {
        throw py::value_error("the bytes are a message of another type than GPS");
    }
    if (decoded.bytesTaken != text.size()) {
        throw py::value_error("the message ends before the bytes do");
    }
    return std::move(*message);
}

py::dict sentencesOf(const GPSTraceMessage& message) {
    py::dict sentences;
    for (const auto& [code, text] : message.getSentences()) {
        sentences[textOf(code)] = py::bytes(text);
    }
    return sentences;
}

bool add(GPSTraceMessage& message, const py::bytes& sentence) {
    const size_t before = message.getSentences().size();
    message.addRecord(sentence);
    return message.getSentences().size() > before;
}

// The bytes of a message do not bring every text back, and cannot hold every message.
State stateOf(const GPSTraceMessage& message) {
    State state{message.getTimeStamp(), message.getHeaderReserved(), message.getMbnr(), {}};
    for (const auto& entry : message.getSentences()) {
        std::get<3>(state).emplace_back(entry.second);
    }
    return state;
}

// What is stored without a line feed was given as "$G".
std::string givenText(const py::bytes& stored) {
    std::string text = stored;
    return text == "$GP" ? "$G" : text;
}

GPSTraceMessage fromState(const State& state) {
    const auto& [stamp, reserved, mbnr, sentences] = state;
    if (sentences.empty()) {
        throw py::value_error("a message holds at least one sentence");
    }
    GPSTraceMessage message(stamp, givenText(sentences.front()));
    for (const py::bytes& sentence : sentences) {
        message.addRecord(givenText(sentence));
    }
    message.setHeaderReserved(reserved);
    message.setMbnr(mbnr);
    return message;
}

// Of what a pickle is made, whatever its form: the class, what constructs it, the whole.
py::tuple reduced(const py::object& message) {
    const State state = stateOf(message.cast<const GPSTraceMessage&>());
    return py::make_tuple(py::type::of(message), py::make_tuple(std::get<0>(state), py::bytes()),
                          state);
}

std::string reprOf(const GPSTraceMessage& message) {
    return "<vextrace.GPSTraceMessage " + std::to_string(message.getTimeStamp()) + ", " +
           std::to_string(message.getSentences().size()) + " sentences>";
}

}  // namespace

void addMessage(py::module_& module) {
    using namespace py::literals;
    py::class_<GPSTraceMessage> itsClass(module, "GPSTraceMessage", py::is_final(),
                                         R"(What a GPS receiver sent at one time.

NMEA 0183 sentences, kept byte for byte, the first of each six-character code.

Parameters
----------
time_ns : int
    Time stamp in nanoseconds since 1970-01-01 UTC; 0 and everything in 1970 is no time.
sentence : bytes
    The first sentence. A line feed is added where it is missing, and a talker that begins with G
    becomes GP.)");
    itsClass
        .def(py::init([](timeStamp_t stamp, const py::bytes& sentence) {
                 return GPSTraceMessage(stamp, static_cast<std::string>(sentence));
             }),
             "time_ns"_a, "sentence"_a)
        .def("add", &add, "sentence"_a, py::pos_only(), R"(Stores a further sentence.

Parameters
----------
sentence : bytes

Returns
-------
bool
    Whether it was stored: the first sentence of a code stays.)")
        .def_static("from_bytes", &fromBytes, "data"_a, py::pos_only(),
                    R"(Rebuilds a message from all of its bytes.

Raises
------
ValueError
    When the bytes are not exactly one GPS message.)")
        .def("__bytes__", &bytesOf)
        .def("__str__",
             [](const GPSTraceMessage& message) {
                 return textOf(static_cast<const MessageBase&>(message).toString());
             })
        .def("__repr__", &reprOf)
        .def(py::self == py::self)
        .def_property_readonly("time_ns", &GPSTraceMessage::getTimeStamp,
                               "int : nanoseconds since 1970-01-01 UTC")
        .def_property_readonly(
            "time",
            [](const GPSTraceMessage& message) { return timeOfStamp(message.getTimeStamp()); },
            "numpy.datetime64 : the same; NaT where it is no time")
        .def_property_readonly("sentences", &sentencesOf,
                               "dict of str to bytes : by code, in the order of the codes")
        .def_property_readonly(
            "fix", [](const GPSTraceMessage& message) { return fixOf(GpsView(message)); },
            "Fix or None : what RMC and GGA say; None where there is neither")
        .def_property_readonly(
            "rdb", [](const GPSTraceMessage& message) { return textOf(message.rdbText()); },
            "str : the position text of the RDB output; empty without a position")
        .def("__getstate__", &stateOf)
        .def("__reduce__", &reduced)
        .def(
            "__reduce_ex__", [](const py::object& message, int) { return reduced(message); },
            "protocol"_a, py::pos_only());
    // By its own name it would be a constructor, which leaves an object that is there as it is.
    itsClass.attr("__setstate__") = py::cpp_function(
        [](GPSTraceMessage& message, const State& state) { message = fromState(state); },
        py::name("_setstate"), py::is_method(itsClass), "state"_a, py::pos_only());
    itsClass.attr("__hash__") = py::none();
    constructByNew(itsClass);
}

}  // namespace vextrace::python
