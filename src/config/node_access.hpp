#pragma once

#include <string_view>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/ref.hpp>
#include <kaputil/automation/variant.hpp>

// Going from one node of a configuration tree to another. A `Parent` may be any object: such steps
// are late-bound, as in the programs that build odd trees.
namespace kap::config {

// The object itself; raises 91 for an unset one.
template <class T>
T& required(const Ref<T>& object) {
    if (!object) {
        throw AutomationError(errors::kObjectNotSet);
    }
    return *object;
}

// A property of any object. Raises 438 when it has none of this name.
[[nodiscard]] inline Variant propertyOf(Object& object, std::u16string_view name) {
    return object.invoke(name, InvokeKind::Get, Arguments{});
}

// The object that a property of any object holds, which may be an unset one. Raises 424 when the
// property holds something else.
[[nodiscard]] inline Ref<Object> objectOf(Object& object, std::u16string_view name) {
    const Variant value = propertyOf(object, name);
    if (!value.isObject()) {
        throw AutomationError(errors::kObjectRequired);
    }
    return value.as<Ref<Object>>();
}

}  // namespace kap::config
