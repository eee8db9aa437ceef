#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::test {

// Calls a member by name with these positional arguments.
inline Variant invoke(Object& object, std::u16string_view member, InvokeKind kind,
                      std::vector<Variant> positional = {}) {
    return object.invoke(member, kind, Arguments{positional, {}});
}

inline Variant call(Object& object, std::u16string_view member,
                    std::vector<Variant> positional = {}) {
    return invoke(object, member, InvokeKind::MethodOrGet, std::move(positional));
}

// Calls a member by name with named arguments only.
inline Variant callNamed(Object& object, std::u16string_view member,
                         std::vector<std::pair<String, Variant>> given) {
    std::vector<Arguments::Named> named;
    named.reserve(given.size());
    for (auto& [name, value] : given) {
        named.push_back({name, &value});
    }
    return object.invoke(member, InvokeKind::MethodOrGet, Arguments{{}, named});
}

}  // namespace kap::test
