#pragma once

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::ado {

// A client's argument as a value; that of an unset object is Null.
[[nodiscard]] inline Variant argumentValue(const Variant& given) {
    const bool isUnset = given.isObject() && !given.as<Ref<Object>>();
    return isUnset ? Variant::null() : convert::plainValue(given);
}

}  // namespace kap::ado
