#include "python/values.hpp"

#include <datetime.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <kaputil/frame/array.hpp>
#include <kaputil/frame/error.hpp>

#include "python/proxy.hpp"
#include "python/python_object.hpp"

namespace kap::python {
namespace {

PackageTypes& types() {
    // Never destroyed: the interpreter is gone before this library is unloaded.
    static auto* const held = new PackageTypes();
    return *held;
}

constexpr double kMicrosecondsPerDay = 86'400'000'000.0;

// 30 December 1899 as Python counts days.
constexpr int kOriginOrdinal = 693594;

void requireDateTime() {
    if (PyDateTimeAPI == nullptr) {
        PyDateTime_IMPORT;
    }
}

Variant dateOf(const py::handle& value) {
    const int ordinal = value.attr("toordinal")().cast<int>();
    double microseconds = 0;
    if (PyDateTime_Check(value.ptr()) != 0) {
        PyObject* date = value.ptr();
        microseconds =
            ((PyDateTime_DATE_GET_HOUR(date) * 60.0 + PyDateTime_DATE_GET_MINUTE(date)) * 60.0 +
             PyDateTime_DATE_GET_SECOND(date)) *
                1e6 +
            PyDateTime_DATE_GET_MICROSECOND(date);
    }
    const double days = ordinal - kOriginOrdinal;
    const double fraction = microseconds / kMicrosecondsPerDay;
    // Before the origin the fraction counts away from zero.
    return Date{days < 0 ? days - fraction : days + fraction};
}

// To the microsecond, or to the millisecond where a Date is that close to one: it carries no more.
py::object dateTimeOf(Date date) {
    requireDateTime();
    constexpr double kMillisecond = 1000;
    const double whole = std::trunc(date.days);
    double microseconds = std::round(std::fabs(date.days - whole) * kMicrosecondsPerDay);
    const double milliseconds = std::round(microseconds / kMillisecond);
    if (std::fabs(microseconds - milliseconds * kMillisecond) <= 2) {
        microseconds = milliseconds * kMillisecond;
    }
    const py::module_ datetime = py::module_::import("datetime");
    const auto ordinal = static_cast<int>(whole) + kOriginOrdinal;
    return datetime.attr("datetime").attr("fromordinal")(ordinal) +
           datetime.attr("timedelta")(0, 0, static_cast<std::int64_t>(microseconds));
}

Variant wholeNumberOf(const py::handle& value) {
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (overflow == 0 && number >= std::numeric_limits<std::int16_t>::min() &&
        number <= std::numeric_limits<std::int16_t>::max()) {
        return static_cast<std::int16_t>(number);
    }
    if (overflow == 0 && number >= std::numeric_limits<std::int32_t>::min() &&
        number <= std::numeric_limits<std::int32_t>::max()) {
        return static_cast<std::int32_t>(number);
    }
    const auto decimal = Decimal::parse(py::str(value).cast<std::string>());
    if (!decimal) {
        throw AutomationError(errors::kOverflow);
    }
    return *decimal;
}

Variant decimalOf(const py::handle& value) {
    const py::str plain = py::str("{:f}").format(value);
    const auto decimal = Decimal::parse(plain.cast<std::string>());
    if (!decimal) {
        throw AutomationError(errors::kOverflow);
    }
    return *decimal;
}

// With the zeros behind its point that it has: amounts keep their four decimals, too.
py::object decimalObject(const Decimal& value) {
    std::string digits = Decimal(value.magnitude(), 0, false).plainText();
    const auto scale = static_cast<std::size_t>(value.scale());
    if (scale > 0) {
        digits.insert(0, digits.size() > scale ? 0 : scale + 1 - digits.size(), '0');
        digits.insert(digits.size() - scale, ".");
    }
    return py::module_::import("decimal").attr("Decimal")((value.negative() ? "-" : "") + digits);
}

Variant arrayOf(const py::handle& values) {
    std::vector<Variant> elements;
    for (const py::handle element : values) {
        elements.push_back(toVariant(element));
    }
    return Array::ofVariants(std::move(elements));
}

Variant bytesOf(const py::handle& value) {
    const std::string bytes = py::bytes(value.cast<py::object>());
    return Array::ofBytes({bytes.begin(), bytes.end()});
}

// Lists within lists, the first index outermost.
py::list listOf(const Array& array, std::vector<std::int32_t>& indexes) {
    const std::size_t dimension = indexes.size() + 1;
    py::list made;
    indexes.push_back(0);
    for (std::int32_t i = array.lowerBound(dimension); i <= array.upperBound(dimension); ++i) {
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
        return packageTypes().nothing;
    }
    if (const auto* python = dynamic_cast<const PythonObject*>(object.get())) {
        return python->object();
    }
    return proxyOf(object);
}

}  // namespace

void setPackageTypes(PackageTypes given) {
    types() = std::move(given);
}

const PackageTypes& packageTypes() {
    return types();
}

String toText(const py::handle& text) {
    const py::bytes encoded = text.attr("encode")("utf-16-le", "surrogatepass");
    const std::string_view bytes = encoded;
    std::u16string units(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    }
    return units;
}

py::str toPython(const String& text) {
    std::string bytes;
    bytes.reserve(2 * text.size());
    for (const char16_t unit : text.view()) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return py::bytes(bytes).attr("decode")("utf-16-le", "surrogatepass");
}

Variant toVariant(const py::handle& value) {
    requireDateTime();
    PyObject* raw = value.ptr();
    if (value.is_none()) {
        return Variant::null();
    }
    if (value.is(packageTypes().empty)) {
        return {};
    }
    if (value.is(packageTypes().nothing)) {
        return Ref<Object>();
    }
    if (PyBool_Check(raw)) {
        return raw == Py_True;
    }
    if (PyLong_Check(raw)) {
        return wholeNumberOf(value);
    }
    if (PyFloat_Check(raw)) {
        return PyFloat_AS_DOUBLE(raw);
    }
    if (PyUnicode_Check(raw)) {
        return toText(value);
    }
    if (PyDate_Check(raw)) {
        return dateOf(value);
    }
    if (PyBytes_Check(raw) || PyByteArray_Check(raw)) {
        return bytesOf(value);
    }
    if (PyList_Check(raw) || PyTuple_Check(raw)) {
        return arrayOf(value);
    }
    if (py::isinstance<ExactValue>(value)) {
        return value.cast<const ExactValue&>().value;
    }
    if (py::isinstance(value, packageTypes().ref)) {
        return toVariant(value.attr("value"));
    }
    if (py::isinstance(value, py::module_::import("decimal").attr("Decimal"))) {
        return decimalOf(value);
    }
    if (const auto object = objectBehind(value)) {
        return *object;
    }
    return Ref<Object>(make<PythonObject>(py::reinterpret_borrow<py::object>(value)));
}

py::object toPython(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
            return packageTypes().empty;
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
            return decimalObject(Decimal(value.as<Currency>().scaled, 4));
        case VarType::Decimal:
            return decimalObject(value.as<Decimal>());
        case VarType::Date:
            return dateTimeOf(value.as<Date>());
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
        VarType::Empty,   VarType::Null,     VarType::Integer, VarType::Long,   VarType::Single,
        VarType::Double,  VarType::Currency, VarType::Date,    VarType::String, VarType::Object,
        VarType::Boolean, VarType::Variant,  VarType::Decimal, VarType::Byte};
    for (const VarType type : kTypes) {
        if (typeName(type) == name) {
            return type;
        }
    }
    throw AutomationError(errors::kInvalidArgument,
                          String("There is no type named '" + name + "'."));
}

}  // namespace kap::python
