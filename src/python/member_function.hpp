#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>

#include <kaputil/automation/class_description.hpp>

// Members of the library's classes as functions in Python: each knows its description, so that a
// call looks no name up.
namespace kap::python {

namespace py = pybind11;

enum class MemberUse : std::uint8_t {
    Call,    // function(object, ...): calls it
    Read,    // function(object): reads the property
    Global,  // function(...): calls it of the calling thread's predeclared object
};

// A function of the member `member` of `owner`, for the body of a class or for a module. As with
// Python's own functions its `__name__`, `__doc__` and `__signature__` can be set.
[[nodiscard]] py::object memberFunction(const ClassDescription& owner,
                                        const MemberDescription& member, MemberUse use);

// Makes their type; before any of them.
void bindMemberFunctions(py::module_& module);

}  // namespace kap::python
