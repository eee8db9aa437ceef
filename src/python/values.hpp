#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include <kaputil/automation/variant.hpp>

#include "python/texts.hpp"

// Values across the border between Python and automation.
namespace kap::python {

namespace py = pybind11;

// None is Null, a bool a Boolean, an int an Integer or a Long when it fits and else a Decimal, a
// float a Double, a Decimal one, a datetime or date a Date, a str a String, bytes a byte array, a
// list or tuple an array from 0 (lists in it are arrays of their own); `...` is an argument that
// was not given, and anything else is an object. Raises TypeError, ValueError or 6.
[[nodiscard]] Variant toVariant(const py::handle& value);

// The way back. An array is a list whatever its bounds, lists within lists when it has several
// dimensions, the first index outermost.
[[nodiscard]] py::object toPython(const Variant& value);

// The type with an English name ("Integer", "Currency", ...). Raises 5 for any other.
[[nodiscard]] VarType typeNamed(const std::string& name);

}  // namespace kap::python
