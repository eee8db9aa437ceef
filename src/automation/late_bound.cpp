#include "automation/late_bound.hpp"

#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>

namespace kap::late {

Object& objectOf(const Variant& value) {
    if (!value.isObject()) {
        throw AutomationError(errors::kObjectRequired);
    }
    const Ref<Object>& object = value.as<Ref<Object>>();
    if (!object) {
        throw AutomationError(errors::kObjectNotSet);
    }
    return *object;
}

Variant invokeDefault(const Variant& value, InvokeKind kind, const Arguments& arguments) {
    if (!value.isObject()) {
        throw AutomationError(errors::kWrongNumberOfArguments);
    }
    return objectOf(value).invoke(kDefaultMember, kind, arguments);
}

Variant call(const Variant& object, std::u16string_view member,
             std::initializer_list<Variant> arguments) {
    std::vector<Variant> positional(arguments);
    return objectOf(object).invoke(member, InvokeKind::MethodOrGet, Arguments{positional, {}});
}

Variant get(const Variant& object, std::u16string_view property) {
    return objectOf(object).invoke(property, InvokeKind::Get, Arguments{});
}

void let(const Variant& object, std::u16string_view property, Variant value) {
    objectOf(object).invoke(property, InvokeKind::Let, Arguments{std::span(&value, 1), {}});
}

}  // namespace kap::late
