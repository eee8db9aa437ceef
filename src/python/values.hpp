#pragma once

#include <pybind11/pybind11.h>

#include <kaputil/frame/variant.hpp>

// Values across the border between Python and automation.
namespace kap::python {

namespace py = pybind11;

// What the package's own Python code defines and the border needs: the exceptions, the two marks
// and the holder of by-reference arguments.
struct PackageTypes {
    py::object automationError;  // AutomationError(number, description, source)
    py::object memberNotFound;   // its subclass that is an AttributeError, too
    py::object empty;
    py::object nothing;
    py::object ref;
};
void setPackageTypes(PackageTypes types);
[[nodiscard]] const PackageTypes& packageTypes();

// A value with its exact automation type.
struct ExactValue {
    Variant value;
};

// None is Null, a bool a Boolean, an int an Integer or a Long when it fits and else a Decimal, a
// float a Double, a Decimal one, a datetime or date a Date, a str a String, bytes a byte array, a
// list or tuple an array from 0; anything else is an object. Raises TypeError or OverflowError.
[[nodiscard]] Variant toVariant(const py::handle& value);
[[nodiscard]] py::object toPython(const Variant& value);

[[nodiscard]] String toText(const py::handle& text);
[[nodiscard]] py::str toPython(const String& text);

// The type with an English name ("Integer", "Currency", ...). Raises 5 for any other.
[[nodiscard]] VarType typeNamed(const std::string& name);

}  // namespace kap::python
