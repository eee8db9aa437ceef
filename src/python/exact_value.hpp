#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include <kaputil/automation/variant.hpp>

#include "python/owner_thread.hpp"

namespace kap::python {

namespace py = pybind11;

// A value with its exact automation type, as Python's `Variant` keeps it.
class ExactValue {
public:
    explicit ExactValue(Variant value) : value_(std::move(value)) {}
    // Python's value, converted to the named type under the current locale where it has another.
    ExactValue(const std::string& type, const py::object& value);

    // Raises RuntimeError where an object is asked for on another thread than its own.
    [[nodiscard]] const Variant& value() const;

private:
    Variant value_;
    OwnerThread owner_;
};

// The Python object that keeps it.
[[nodiscard]] py::object exactObject(Variant value);

// Binds its class into the module, and the function exact_value that makes one.
void bindExactValue(py::module_& module);

}  // namespace kap::python
