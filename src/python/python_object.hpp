#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

#include <kaputil/frame/error.hpp>
#include <kaputil/frame/object.hpp>
#include <kaputil/frame/variant.hpp>

namespace kap::python {

namespace py = pybind11;

// Any Python object where automation expects one: a form, a text box, a mail client.
//
// Its attributes and methods are its members, names matched exactly first and then ignoring case;
// `_default_member_` in its class names the default one. It may be dropped from code that does not
// hold the interpreter lock.
class PythonObject final : public Object {
public:
    explicit PythonObject(py::object object);
    ~PythonObject() override;

    [[nodiscard]] const py::object& object() const { return object_; }

    [[nodiscard]] String className() const override;
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;
    [[nodiscard]] std::vector<Variant> elements() override;

private:
    [[nodiscard]] std::optional<std::string> attributeNamed(const std::string& name) const;
    [[nodiscard]] std::string nameOf(std::int32_t member) const;

    py::object object_;
    mutable std::vector<std::string> names_;  // of the members asked for, by identifier from 1
};

// An exception that a Python object raised while the library called it. To the library it is an
// automation error; where it reaches Python again, it is the original one with its traceback.
class PythonError final : public AutomationError {
public:
    explicit PythonError(py::error_already_set& error);
    void restore() const;

private:
    std::shared_ptr<py::error_already_set> original_;
};

}  // namespace kap::python
