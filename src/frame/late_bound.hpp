#pragma once

#include <initializer_list>
#include <string_view>

#include <kaputil/frame/object.hpp>
#include <kaputil/frame/variant.hpp>

// Calling members of any object by name, as a program does that does not know its class.
namespace kap::late {

// The object that a value holds. Raises 424 for a value that is no object, 91 for the unset one.
[[nodiscard]] Object& objectOf(const Variant& value);

// Calls a method, or reads a property with arguments.
Variant call(const Variant& object, std::u16string_view member,
             std::initializer_list<Variant> arguments = {});

// Reads a property, assigns it.
[[nodiscard]] Variant get(const Variant& object, std::u16string_view property);
void let(const Variant& object, std::u16string_view property, Variant value);

}  // namespace kap::late
