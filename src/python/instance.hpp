#pragma once

#include <pybind11/pybind11.h>

#include <memory>

namespace kap::python {

namespace py = pybind11;

// A Python object that holds a value, of the class bound for such values or of one made from it.
// When memory ends while it is made, the value ends, too.
template <class Held>
py::object instanceOf(PyTypeObject* type, std::unique_ptr<Held> held) {
    static const py::detail::type_info& info = *py::detail::get_type_info(typeid(Held));
    auto made = py::reinterpret_steal<py::object>(py::detail::make_new_instance(type));
    auto* const instance = reinterpret_cast<py::detail::instance*>(made.ptr());
    instance->owned = true;
    Held* const value = held.release();
    instance->get_value_and_holder().value_ptr() = value;
    try {
        info.init_instance(instance, nullptr);
    } catch (...) {
        // Without a holder only the memory is given back: what it refers to would never end.
        std::destroy_at(value);
        throw;
    }
    return made;
}

}  // namespace kap::python
