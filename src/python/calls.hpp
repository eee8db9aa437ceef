#pragma once

#include <pybind11/pybind11.h>

#include <span>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

// Calls from Python into the library. Each lets Python's other threads go on while it works.
namespace kap::python {

namespace py = pybind11;

// Python's arguments of a call, borrowed from the caller.
struct PythonArguments {
    std::span<PyObject* const> positional;
    std::vector<std::pair<py::handle, py::handle>> named;  // names and values
};

// Calls a member by name with Python's arguments. What a member assigns to an argument passed by
// reference is the `value` of its Ref afterwards, also when the member raised; a Ref that it left
// alone keeps the very object. None is an unset
// object where the member takes one, and `...` an argument that is not given.
[[nodiscard]] Variant callMember(Object& object, const String& name, InvokeKind kind,
                                 const py::tuple& positional, const py::dict& named);

// The same for a member that was looked up before, one of the object's own description.
[[nodiscard]] Variant callMember(DescribedObject& object, const MemberDescription& member,
                                 InvokeKind kind, const PythonArguments& given);

// The same for the default member.
[[nodiscard]] Variant callDefault(Object& object, const py::tuple& positional,
                                  const py::dict& named);

// Assigns to a property: an object as a reference where the property takes one. With indexes the
// value is for the default member of what the member gives, `form.Fields("Nome") = value`.
void assignMember(Object& object, const String& name, const py::tuple& indexes,
                  const py::handle& value);

// The same for the default member, `rows("Nome") = value`.
void assignDefault(Object& object, const py::tuple& indexes, const py::handle& value);

}  // namespace kap::python
