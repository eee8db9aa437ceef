#pragma once

#include <pybind11/pybind11.h>

#include <kaputil/automation/variant.hpp>

// Dates across the border.
namespace kap::python {

namespace py = pybind11;

// Whether it is a datetime.date or a datetime.datetime.
[[nodiscard]] bool isPythonDate(const py::handle& value);

// Raises 6 before the year 100, where automation's calendar begins, and ValueError for a datetime
// with a time zone, which an automation date cannot hold.
[[nodiscard]] Date toDate(const py::handle& value);

// A datetime. Raises 6 for a date outside the calendar.
[[nodiscard]] py::object toPython(Date date);

}  // namespace kap::python
