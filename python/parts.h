#pragma once

#include <pybind11/pybind11.h>

namespace vextrace::python {

// What the module consists of; each adds its part.
void addMessage(pybind11::module_& module);
void addReading(pybind11::module_& module);
void addFixTable(pybind11::module_& module);

/// Makes it impossible that an object of a class exists in Python but not in C++, which pybind11
/// leaves open to __new__ and to the older forms of pickles. The class must be final.
void constructByNew(const pybind11::object& itsClass);

/// The same where no one constructs objects in Python.
void constructNever(const pybind11::object& itsClass);

}  // namespace vextrace::python
