#include "python/values.hpp"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/nesting.hpp>

#include "python/dates.hpp"
#include "python/exact_value.hpp"
#include "python/numbers.hpp"
#include "python/package.hpp"
#include "python/proxy.hpp"
#include "python/python_object.hpp"

namespace kap::python {
namespace {

Variant arrayOf(const py::handle& values) {
    const NestingGuard guard;  // a list may hold itself
    std::vector<Variant> elements;
    for (const py::handle element : values) {
        elements.push_back(toVariant(element));
    }
    return Array::ofVariants(std::move(elements));
}

Variant bytesOf(const py::handle& value) {
    const auto held = py::reinterpret_steal<py::bytes>(PyBytes_FromObject(value.ptr()));
    if (!held) {
        throw py::error_already_set();
    }
    const std::string_view bytes = held;
    return Array::ofBytes({bytes.begin(), bytes.end()});
}

py::list listOf(const Array& array, std::vector<std::int32_t>& indexes) {
    const std::size_t dimension = indexes.size() + 1;
    const std::int32_t last = array.upperBound(dimension);
    py::list made;
    indexes.push_back(0);
    for (std::int32_t i = array.lowerBound(dimension); i <= last; ++i) {
        indexes.back() = i;
        if (dimension == array.dimensions().size()) {
            made.append(toPython(array.at(indexes)));
        } else {
            made.append(listOf(array, indexes));
        }
    }
    indexes.pop_back();
    return made;
}

py::object arrayObject(const Array& array) {
    if (array.elementType() == VarType::Byte) {
        const std::vector<std::uint8_t>& bytes = array.bytes();
        return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    std::vector<std::int32_t> indexes;
    return listOf(array, indexes);
}

py::object objectOf(const Ref<Object>& object) {
    if (!object) {
        return package().nothing;
    }
    if (const auto* python = dynamic_cast<const PythonObject*>(object.get())) {
        return python->object();
    }
    return proxyOf(object);
}

// What is no plain value of Python's own.
Variant objectOrHolder(const py::handle& value) {
    if (py::isinstance(value, package().variant)) {
        return value.attr("_exact").cast<const ExactValue&>().value();
    }
    if (py::isinstance(value, package().ref)) {
        const NestingGuard guard;  // a reference may hold itself
        return toVariant(value.attr("value"));
    }
    if (isPythonDecimal(value)) {
        return toDecimal(value);
    }
    if (const auto object = objectBehind(value)) {
        return *object;
    }
    return make<PythonObject>(py::reinterpret_borrow<py::object>(value));
}

}  // namespace

Variant toVariant(const py::handle& value) {
    PyObject* raw = value.ptr();
    if (value.is_none()) {
        return Variant::null();
    }
    if (value.is(package().empty)) {
        return {};
    }
    if (value.is(package().nothing)) {
        return Ref<Object>();
    }
    if (raw == Py_Ellipsis) {
        return Variant::missing();
    }
    if (PyBool_Check(raw)) {
        return raw == Py_True;
    }
    if (PyLong_Check(raw)) {
        return wholeNumber(value);
    }
    if (PyFloat_Check(raw)) {
        return PyFloat_AS_DOUBLE(raw);
    }
    if (PyUnicode_Check(raw)) {
        return toText(value);
    }
    if (isPythonDate(value)) {
        return toDate(value);
    }
    if (PyBytes_Check(raw) || PyByteArray_Check(raw)) {
        return bytesOf(value);
    }
    if (PyList_Check(raw) || PyTuple_Check(raw)) {
        return arrayOf(value);
    }
    return objectOrHolder(value);
}

py::object toPython(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
            return package().empty;
        case VarType::Null:
            return py::none();
        case VarType::Boolean:
            return py::bool_(value.as<bool>());
        case VarType::Byte:
            return py::int_(value.as<std::uint8_t>());
        case VarType::Integer:
            return py::int_(value.as<std::int16_t>());
        case VarType::Long:
            return py::int_(value.as<std::int32_t>());
        case VarType::Single:
            return py::float_(static_cast<double>(value.as<float>()));
        case VarType::Double:
            return py::float_(value.as<double>());
        case VarType::Currency:
            return toPython(Decimal(value.as<Currency>().scaled, 4));
        case VarType::Decimal:
            return toPython(value.as<Decimal>());
        case VarType::Date:
            return toPython(value.as<Date>());
        case VarType::String:
            return toPython(value.as<String>());
        case VarType::Array:
            return arrayObject(value.as<Array>());
        case VarType::Object:
            return objectOf(value.as<Ref<Object>>());
        default:
            return py::ellipsis();  // an argument that was not given
    }
}

VarType typeNamed(const std::string& name) {
    constexpr std::array kTypes = {
        VarType::Empty,  VarType::Null,  VarType::Integer, VarType::Long,    VarType::Single,
        VarType::Double, VarType::Byte,  VarType::Date,    VarType::String,  VarType::Currency,
        VarType::Object, VarType::Array, VarType::Boolean, VarType::Decimal, VarType::Variant};
    for (const VarType type : kTypes) {
        if (typeName(type) == name) {
            return type;
        }
    }
    throw AutomationError(errors::kInvalidArgument,
                          String("There is no type named '" + name + "'."));
}

}  // namespace kap::python
