#pragma once

#include <pybind11/pybind11.h>

namespace kap::python {

namespace py = pybind11;

// number_registers(connection, counter, year, today): the registers as plain lists and tuples, of
// which the package makes what programs see.
void bindNumberRegisters(py::module_& module);

}  // namespace kap::python
