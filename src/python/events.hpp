#pragma once

#include <pybind11/pybind11.h>

namespace kap::python {

// Binds into the module what connects Python objects to the events of the library's: connect and
// disconnect.
void bindEvents(pybind11::module_& module);

}  // namespace kap::python
