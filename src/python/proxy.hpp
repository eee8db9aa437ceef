#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <string>

#include <kaputil/frame/class_description.hpp>
#include <kaputil/frame/object.hpp>

namespace kap::python {

namespace py = pybind11;

// A library object as Python sees it; the classes that the catalogue describes are made from their
// descriptions, each a subclass of the one bound here.
[[nodiscard]] py::object proxyOf(const Ref<Object>& object);

// The object behind a proxy; nullopt for any other Python object.
[[nodiscard]] std::optional<Ref<Object>> objectBehind(const py::handle& value);

// Calls a member with Python's arguments, by-reference ones being written back into theirs.
[[nodiscard]] Variant callMember(Object& object, const String& name, InvokeKind kind,
                                 const py::args& positional, const py::kwargs& named);

// "Leggi(sNomeProprieta='DEFAULT') -> Variant" and what the member does.
[[nodiscard]] std::string memberDocumentation(const MemberDescription& member);

// Binds the proxy's class into the module.
void bindProxies(py::module_& module);

}  // namespace kap::python
