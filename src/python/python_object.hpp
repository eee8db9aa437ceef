#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::python {

namespace py = pybind11;

// Any Python object where automation expects one: a form, a text box, a mail client.
//
// Its attributes and methods are its members, names matched exactly first and then ignoring case;
// `_default_member_` in its class names the default one. An attribute that can be called is called,
// unless only its value is asked for or it is an object itself: one of the library's, or one whose
// class names a default member. Assigning a member that it has not is Python's own assignment, and
// raises 438 when the object refuses it. A parameter annotated as `kaputil.Ref` takes the argument
// by reference, and what the method leaves in it is written back.
//
// It may be called and dropped by code that does not hold the interpreter's lock.
class PythonObject final : public Object {
public:
    explicit PythonObject(py::object object);
    ~PythonObject() override;

    [[nodiscard]] const py::object& object() const { return object_; }

    [[nodiscard]] String className() const override;
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;
    Variant invoke(std::u16string_view member, InvokeKind kind,
                   const Arguments& arguments) override;
    [[nodiscard]] std::vector<Variant> elements() override;

private:
    [[nodiscard]] py::str attributeFor(std::int32_t member) const;
    [[nodiscard]] Variant read(const py::str& attribute, InvokeKind kind,
                               const Arguments& arguments) const;
    void makeAttribute(const String& name, const Variant& value);

    py::object object_;
    mutable std::vector<py::str> names_;  // of the members asked for, by identifier from 1
};

}  // namespace kap::python
