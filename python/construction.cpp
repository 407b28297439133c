#include <pybind11/pybind11.h>

#include "python/parts.h"

namespace vextrace::python {

namespace py = pybind11;

namespace {

PyTypeObject* typeOf(const py::object& itsClass) {
    return reinterpret_cast<PyTypeObject*>(itsClass.ptr());
}

// The second call of __init__, which is Python's own, finds an object that is there and leaves it.
PyObject* construct(PyTypeObject* type, PyObject* arguments, PyObject* named) {
    PyObject* const made = type->tp_base->tp_new(type, arguments, named);
    if (made != nullptr && type->tp_init(made, arguments, named) != 0) {
        Py_DECREF(made);
        return nullptr;
    }
    return made;
}

void refusePickles(const py::object& itsClass) {
    const auto refuse = [](const py::args&) -> py::object {
        throw py::type_error("such an object cannot be pickled or copied");
    };
    for (const char* const name : {"__reduce__", "__reduce_ex__"}) {
        itsClass.attr(name) = py::cpp_function(refuse, py::name(name), py::is_method(itsClass));
    }
}

}  // namespace

void constructByNew(const py::object& itsClass) {
    typeOf(itsClass)->tp_new = construct;
    if (!py::hasattr(itsClass, "__setstate__")) {
        refusePickles(itsClass);
    }
}

void constructNever(const py::object& itsClass) {
    typeOf(itsClass)->tp_new = nullptr;
    refusePickles(itsClass);
}

}  // namespace vextrace::python
