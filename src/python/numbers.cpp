#include "python/numbers.hpp"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <kaputil/automation/error.hpp>

namespace kap::python {
namespace {

template <class Whole>
bool fits(long long number) {
    return number >= std::numeric_limits<Whole>::min() &&
           number <= std::numeric_limits<Whole>::max();
}

template <class T>
T require(const std::optional<T>& value) {
    if (!value) {
        throw AutomationError(errors::kOverflow);
    }
    return *value;
}

py::object decimalClass() {
    return py::module_::import("decimal").attr("Decimal");
}

}  // namespace

Variant wholeNumber(const py::handle& value) {
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (overflow == 0 && fits<std::int16_t>(number)) {
        return static_cast<std::int16_t>(number);
    }
    if (overflow == 0 && fits<std::int32_t>(number)) {
        return static_cast<std::int32_t>(number);
    }
    constexpr int kDecimalBits = 96;
    if (value.attr("bit_length")().cast<std::size_t>() > kDecimalBits) {
        throw AutomationError(errors::kOverflow);
    }
    const auto digits = py::reinterpret_steal<py::str>(PyNumber_ToBase(value.ptr(), 10));
    return require(Decimal::parse(digits.cast<std::string>()));
}

Decimal toDecimal(const py::handle& value) {
    if (!value.attr("is_finite")().cast<bool>()) {
        throw AutomationError(errors::kOverflow);
    }
    // Decided by the exponent alone: written out, a number of Python's may fill the memory.
    const auto exponent = value.attr("adjusted")().cast<std::int64_t>();
    if (value.attr("is_zero")().cast<bool>() || exponent < -Decimal::kMaxScale - 1) {
        return {};
    }
    if (exponent > Decimal::kMaxScale) {
        throw AutomationError(errors::kOverflow);
    }
    return require(Decimal::parse(py::str("{:f}").format(value).cast<std::string>()));
}

py::object toPython(const Decimal& value) {
    std::string digits = Decimal(value.magnitude(), 0, false).plainText();
    const auto scale = static_cast<std::size_t>(value.scale());
    if (scale > 0) {
        digits.insert(0, digits.size() > scale ? 0 : scale + 1 - digits.size(), '0');
        digits.insert(digits.size() - scale, ".");
    }
    return decimalClass()((value.negative() && !value.isZero() ? "-" : "") + digits);
}

bool isPythonDecimal(const py::handle& value) {
    return py::isinstance(value, decimalClass());
}

}  // namespace kap::python
