#include "automation/same_value.hpp"

#include <kaputil/automation/array.hpp>

namespace kap {
namespace {

template <class T>
bool holdSame(const Variant& before, const Variant& after) {
    return isSameValue(before.as<T>(), after.as<T>());
}

}  // namespace

bool isSameValue(const Variant& before, const Variant& after) {
    if (before.type() != after.type()) {
        return false;
    }
    switch (before.type()) {
        case VarType::Byte:
            return holdSame<std::uint8_t>(before, after);
        case VarType::Integer:
            return holdSame<std::int16_t>(before, after);
        case VarType::Long:
            return holdSame<std::int32_t>(before, after);
        case VarType::Single:
            return holdSame<float>(before, after);
        case VarType::Double:
            return holdSame<double>(before, after);
        case VarType::Currency:
            return holdSame<Currency>(before, after);
        case VarType::Date:
            return holdSame<Date>(before, after);
        case VarType::Boolean:
            return holdSame<bool>(before, after);
        case VarType::Decimal:
            return holdSame<Decimal>(before, after);
        case VarType::String:
            // Copies share their text, so that one which nobody assigned is not even read.
            return &before.as<String>() == &after.as<String>() || holdSame<String>(before, after);
        case VarType::Object:
            return holdSame<Ref<Object>>(before, after);
        case VarType::Array:
            return &before.as<Array>() == &after.as<Array>();
        default:
            return true;  // Empty, Null and a missing argument have no content
    }
}

}  // namespace kap
