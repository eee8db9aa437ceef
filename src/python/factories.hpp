#pragma once

#include <pybind11/pybind11.h>

namespace kap::python {

namespace py = pybind11;

// Binds register, unregister and unregister_all into the module: Python functions that answer for
// programmatic names. The last one takes them all back, before the interpreter ends.
void bindFactories(py::module_& module);

}  // namespace kap::python
