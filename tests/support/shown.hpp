#pragma once

#include <cstdint>
#include <string>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::test {

// A value with its type, for comparing and for reading in a failure: "Integer 0", "String Abc",
// "Null". Numbers and dates are printed under the locale in force.
inline std::string shown(const Variant& value) {
    const std::string type(typeName(value.type()));
    switch (value.type()) {
        case VarType::Empty:
        case VarType::Null:
        case VarType::Error:
        case VarType::Object:
        case VarType::Array:
            return type;
        default:
            return type + " " + convert::toString(value).utf8();
    }
}

// The number of the error that an action raises; 0 when it raises none.
template <class Action>
std::int32_t raisedBy(Action&& action) {
    try {
        static_cast<void>(action());
    } catch (const AutomationError& error) {
        return error.number();
    }
    return 0;
}

}  // namespace kap::test
