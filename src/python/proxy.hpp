#pragma once

#include <pybind11/pybind11.h>

#include <optional>

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

// Library objects as Python sees them.
namespace kap::python {

namespace py = pybind11;

// The Python object that stands for one of the library's, of the class that its description gives
// it. It belongs to the thread that calls this.
[[nodiscard]] py::object proxyOf(const Ref<Object>& object);

// The object that a Python one stands for; nullopt when it is no proxy. Raises RuntimeError on
// another thread than its own.
[[nodiscard]] std::optional<Ref<Object>> objectBehind(const py::handle& value);

// Binds their class `Object` into the module, and the functions that the package's classes are made
// of: call, call_default, get, assign and elements.
void bindProxies(py::module_& module);

}  // namespace kap::python
