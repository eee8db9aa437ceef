#include <kaputil/automation/variant.hpp>

#include <array>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/error.hpp>

namespace kap {

std::string_view typeName(VarType type) noexcept {
    switch (type) {
        case VarType::Empty:
            return "Empty";
        case VarType::Null:
            return "Null";
        case VarType::Integer:
            return "Integer";
        case VarType::Long:
            return "Long";
        case VarType::Single:
            return "Single";
        case VarType::Double:
            return "Double";
        case VarType::Currency:
            return "Currency";
        case VarType::Date:
            return "Date";
        case VarType::String:
            return "String";
        case VarType::Object:
            return "Object";
        case VarType::Error:
            return "Error";
        case VarType::Boolean:
            return "Boolean";
        case VarType::Variant:
            return "Variant";
        case VarType::Decimal:
            return "Decimal";
        case VarType::Byte:
            return "Byte";
        case VarType::Array:
            return "Array";
    }
    return "Unknown";
}

Variant::Variant(Array array) : value_(std::make_shared<const Array>(std::move(array))) {}

VarType Variant::type() const noexcept {
    // In the order of `Value`'s alternatives.
    static constexpr std::array kTypes = {
        VarType::Empty,   VarType::Null,    VarType::Error,  VarType::Boolean, VarType::Byte,
        VarType::Integer, VarType::Long,    VarType::Single, VarType::Double,  VarType::Currency,
        VarType::Date,    VarType::Decimal, VarType::String, VarType::Array,   VarType::Object,
    };
    static_assert(kTypes.size() == std::variant_size_v<Value>);
    return kTypes[value_.index()];
}

void Variant::throwTypeMismatch() {
    throw AutomationError(errors::kTypeMismatch);
}

}  // namespace kap
