#pragma once

#include <pybind11/pybind11.h>

#include <kaputil/automation/variant.hpp>

// Whole numbers and decimals across the border.
namespace kap::python {

namespace py = pybind11;

// An int: an Integer or a Long when it fits, else a Decimal; raises 6 when it fits none.
[[nodiscard]] Variant wholeNumber(const py::handle& value);

// A decimal.Decimal, digits that do not fit rounded off half to even; raises 6 for one that is too
// large or no number.
[[nodiscard]] Decimal toDecimal(const py::handle& value);

// A decimal.Decimal with the zeros behind its point that the value has: amounts keep their four
// decimals, too.
[[nodiscard]] py::object toPython(const Decimal& value);

// Whether it is a decimal.Decimal.
[[nodiscard]] bool isPythonDecimal(const py::handle& value);

}  // namespace kap::python
