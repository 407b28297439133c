#pragma once

#include <pybind11/pybind11.h>

namespace vextrace::python {

// What the module consists of; each adds its part.
void addMessage(pybind11::module_& module);
void addReading(pybind11::module_& module);
void addFixTable(pybind11::module_& module);

}  // namespace vextrace::python
