#include "python/exact_value.hpp"

#include <memory>
#include <utility>

#include <kaputil/automation/convert.hpp>

#include "python/instance.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

Variant converted(const Variant& value, VarType type) {
    if (value.type() == type) {
        return value;  // arrays, which convert to nothing, among them
    }
    if (type == VarType::Object && value.isNull()) {
        return Ref<Object>();  // None where an object is expected
    }
    return convert::changeType(value, type);
}

}  // namespace

ExactValue::ExactValue(const std::string& type, const py::object& value)
    : ExactValue(converted(toVariant(value), typeNamed(type))) {}

const Variant& ExactValue::value() const {
    if (value_.isObject() && value_.as<Ref<Object>>()) {
        owner_.require(*value_.as<Ref<Object>>());
    }
    return value_;
}

py::object exactObject(Variant value) {
    static auto* const type = reinterpret_cast<PyTypeObject*>(
        py::detail::get_type_handle(typeid(ExactValue), /*throw_if_missing=*/true).ptr());
    return instanceOf(type, std::make_unique<ExactValue>(std::move(value)));
}

void bindExactValue(py::module_& module) {
    py::class_<ExactValue>(module, "ExactValue")
        .def_property_readonly(
            "type",
            [](const ExactValue& self) { return std::string(typeName(self.value().type())); })
        .def_property_readonly("value",
                               [](const ExactValue& self) { return toPython(self.value()); });
    module.def("exact_value", [](const std::string& type, const py::object& value) {
        return exactObject(ExactValue(type, value).value());
    });
}

}  // namespace kap::python
