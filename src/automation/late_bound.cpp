#include "automation/late_bound.hpp"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <kaputil/automation/array.hpp>
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

std::vector<Variant> elements(const Variant& collection) {
    if (!collection.isArray()) {
        if (!collection.isObject()) {
            throw AutomationError(errors::kTypeMismatch);
        }
        return objectOf(collection).elements();
    }
    const auto& array = collection.as<Array>();
    std::vector<Variant> made;
    made.reserve(array.size());
    std::vector<std::int32_t> indexes;
    indexes.reserve(array.dimensions().size());
    for (const Array::Dimension& dimension : array.dimensions()) {
        indexes.push_back(dimension.lower);
    }
    // The leftmost index runs fastest, as in the array itself.
    for (std::size_t left = array.size(); left > 0; --left) {
        made.push_back(array.at(indexes));
        for (std::size_t i = 0; i < indexes.size(); ++i) {
            const Array::Dimension& dimension = array.dimensions()[i];
            const auto count = static_cast<std::int32_t>(dimension.count);
            if (++indexes[i] < dimension.lower + count) {
                break;
            }
            indexes[i] = dimension.lower;
        }
    }
    return made;
}

}  // namespace kap::late
