#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>

#include "libvexstream/Fix.h"
#include "libvexstream/GpsView.h"
#include "libvexstream/TraceReader.h"
#include "libvexstream/messageNames.h"
#include "libvexutil/datablock.h"
#include "python/parts.h"
#include "python/sources.h"
#include "python/values.h"

namespace vextrace::python {

namespace {

// A message of a trace, with its own copy of the bytes.
struct Message {
    uint64_t offset;
    msgid_t id;
    timeStamp_t stamp;
    std::string bytes;
    std::optional<Fix> fix;

    bool isGps() const { return id == MSGID_GPS; }

    GPSTraceMessage decoded() const {
        const auto* const data = reinterpret_cast<const uint8_t*>(bytes.data());
        DecodedMessage result = MessageFactory::decode(data, bytes.size());
        auto* const gps = dynamic_cast<GPSTraceMessage*>(result.message.get());
        if (gps == nullptr) {
            throw py::value_error("the message is of another type than GPS");
        }
        return std::move(*gps);
    }
};

struct Damage {
    uint64_t offset;
    uint64_t length;
    std::string reason;
};

// The items of a trace, one after the other.
class TraceIterator {
public:
    explicit TraceIterator(const py::object& source) : input(source), reader(input.bytes()) {}

    py::object next() {
        const Use use(inUse);
        std::optional<Message> message;
        std::optional<Damage> damage;
        {
            const Unlocked unlocked(!input.callsPython());
            const TraceItem item = reader.next();
            if (item.kind == TraceItem::Kind::DAMAGE) {
                damage = {item.offset, item.length, item.reason};
            } else if (item.kind != TraceItem::Kind::END) {
                message = copied(item);
            }
        }
        if (!message && !damage) {
            throw py::stop_iteration();
        }
        return message ? py::cast(std::move(*message)) : py::cast(std::move(*damage));
    }

private:
    Message copied(const TraceItem& item) {
        Message message{item.offset, item.id,
                        byteArrayToUint64(item.bytes.data() + MessageBase::MO_TIMESTAMP),
                        std::string(item.bytes.begin(), item.bytes.end()), std::nullopt};
        if (item.gps != nullptr) {
            message.fix = fixes.read(*item.gps);
        }
        return message;
    }

    Input input;
    TraceReader reader;
    FixReader fixes;
    bool inUse = false;
};

py::dict sentencesOrNone(const Message& message) {
    return message.isGps() ? py::cast(message.decoded()).attr("sentences").cast<py::dict>()
                           : py::dict();
}

void addFix(py::module_& module) {
    py::class_<Fix> itsClass(module, "Fix", py::is_final(),
                             R"(What RMC and GGA of one message say.

A value is None where the receiver did not send one that makes sense.)");
    itsClass
        .def_property_readonly(
            "time", [](const Fix& fix) { return timeOfStamp(fix.stamp); },
            "numpy.datetime64 : stamp of the message; NaT where it has no date")
        .def_readonly("valid", &Fix::valid,
                      "bool : the receiver calls it valid, and it has a position")
        .def_readonly("repeats", &Fix::repeats,
                      "bool : says again what another message of its epoch said")
        .def_property_readonly(
            "latitude", [](const Fix& fix) { return fix.latitude; },
            "float or None : degrees, north positive")
        .def_property_readonly(
            "longitude", [](const Fix& fix) { return fix.longitude; },
            "float or None : degrees, east positive")
        .def_property_readonly(
            "altitude", [](const Fix& fix) { return fix.altitude; },
            "float or None : metres above mean sea level")
        .def_property_readonly(
            "speed", [](const Fix& fix) { return fix.speed; }, "float or None : km/h over ground")
        .def_property_readonly(
            "course", [](const Fix& fix) { return fix.course; },
            "float or None : degrees over ground")
        .def_property_readonly(
            "satellites", [](const Fix& fix) { return fix.satellites; }, "int or None : in use")
        .def_property_readonly(
            "quality", [](const Fix& fix) { return fix.quality; },
            "int or None : of GGA; 0 is no fix")
        .def_property_readonly(
            "hdop", [](const Fix& fix) { return fix.hdop; },
            "float or None : horizontal dilution of precision")
        .def_property_readonly(
            "checksum", [](const Fix& fix) { return nameOf(fix.checksum()); },
            "str : \"right\", \"wrong\" or \"none\", of the sentences used");
    constructNever(itsClass);
}

}  // namespace

void addReading(py::module_& module) {
    using namespace py::literals;
    addFix(module);
    py::class_<Message> messages(module, "Message", py::is_final(), "A message of a trace.");
    messages.def_readonly("offset", &Message::offset, "int : its first byte, in the trace")
        .def_property_readonly(
            "length", [](const Message& m) { return m.bytes.size(); }, "int : its bytes")
        .def_property_readonly(
            "id", [](const Message& m) { return static_cast<unsigned>(m.id); },
            "int : its type; 22 is GPS")
        .def_property_readonly(
            "type", [](const Message& m) { return messageName(m.id); },
            "str : the name of its type; empty where it has none")
        .def_readonly("time_ns", &Message::stamp, "int : its stamp as it stands in the trace")
        .def_property_readonly(
            "time", [](const Message& m) { return timeOfStamp(m.stamp); },
            "numpy.datetime64 : the same; NaT where it is no time")
        .def_readonly("fix", &Message::fix, "Fix or None : None but for GPS with RMC or GGA")
        .def_property_readonly("sentences", &sentencesOrNone,
                               "dict of str to bytes : by code; empty but for GPS")
        .def_property_readonly("gps", &Message::decoded,
                               "GPSTraceMessage : raises ValueError for other types")
        .def("__bytes__", [](const Message& m) { return py::bytes(m.bytes); })
        .def("__repr__", [](const Message& m) {
            return "<vextrace.Message at byte " + std::to_string(m.offset) + ", type " +
                   std::to_string(m.id) + ">";
        });
    py::class_<Damage> damages(module, "Damage", py::is_final(),
                               "Bytes of a trace that are no message.");
    damages.def_readonly("offset", &Damage::offset, "int : the first of them, in the trace")
        .def_readonly("length", &Damage::length, "int : how many")
        .def_readonly("reason", &Damage::reason, "str : why they are none")
        .def("__repr__", [](const Damage& d) {
            return "<vextrace.Damage at byte " + std::to_string(d.offset) + ", " +
                   std::to_string(d.length) + " bytes: " + d.reason + ">";
        });
    py::class_<TraceIterator> iterators(module, "_TraceIterator", py::is_final());
    iterators.def(py::init<const py::object&>())
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", &TraceIterator::next);
    constructNever(messages);
    constructNever(damages);
    constructByNew(iterators);
}

}  // namespace vextrace::python
