#pragma once

#include <pybind11/pybind11.h>

namespace kap::python {

namespace py = pybind11;

// What the package's own Python code defines and the border needs. It stands until the interpreter
// ends.
struct Package {
    py::object automationError;  // the exception: AutomationError(number, description, source)
    py::object memberNotFound;   // its subclass that is an AttributeError, too
    py::object empty;            // the two marks
    py::object nothing;
    py::object ref;            // the class that holds an argument passed by reference
    py::object variant;        // the class of values with their exact type, in `_exact`
    py::object object;         // the class of objects that no table describes
    py::object makeClass;      // (description): the subclass of it for a class that one does
    py::object errorParts;     // (exception): its number, description and source
    py::object findAttribute;  // (object, name): the attribute that a member's name stands for
    py::object references;     // (function): positions and names of parameters that take a Ref
};

// Takes each of them by its name as Python spells it (`automation_error`).
void setPackage(const py::kwargs& given);
[[nodiscard]] const Package& package();

}  // namespace kap::python
