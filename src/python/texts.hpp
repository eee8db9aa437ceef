#pragma once

#include <pybind11/pybind11.h>

#include <kaputil/automation/string.hpp>

// Texts across the border. Every code unit is kept: halves of surrogate pairs and NULs, too.
namespace kap::python {

namespace py = pybind11;

// Of a str; raises TypeError for anything else.
[[nodiscard]] String toText(const py::handle& text);
[[nodiscard]] py::str toPython(const String& text);

}  // namespace kap::python
