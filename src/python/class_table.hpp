#pragma once

#include <pybind11/pybind11.h>

#include <kaputil/automation/class_description.hpp>

// The classes of the catalogue as Python sees them. Nothing here knows one of them.
namespace kap::python {

namespace py = pybind11;

// The Python class made from a description; one each, made by the package when it is first needed.
[[nodiscard]] py::object classFor(const ClassDescription& description);

// Binds into the module:
//   class_descriptions()    every class that the catalogue names or whose objects members give
//   class_named(name)       the Python class of one of them, or None
//   programmatic_names()    pairs of a name for Dispatch and the class that it makes
//   enumerations()          pairs of a name and the names and values in it
//   class_names()           their names
//   examples()              the documentation's examples: (name, Python program)
//   global_class()          the description of the class of the predeclared object
void bindClassTable(py::module_& module);

}  // namespace kap::python
