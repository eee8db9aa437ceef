#pragma once

#include <initializer_list>
#include <string_view>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

// Calling members of any object by name, as a program does that does not know its class.
namespace kap::late {

// The object that a value holds. Raises 424 for a value that is no object, 91 for the unset one.
[[nodiscard]] Object& objectOf(const Variant& value);

// Reads or assigns through the default member of the object that a value holds: arguments for a
// member that takes none are for that of what it gives, `rows.Fields("Nome")`. Raises 450 for a
// value that is no object, 91 for the unset one, and what the default member raises.
Variant invokeDefault(const Variant& value, InvokeKind kind, const Arguments& arguments);

// Calls a method, or reads a property with arguments.
Variant call(const Variant& object, std::u16string_view member,
             std::initializer_list<Variant> arguments = {});

// Reads a property, assigns it.
[[nodiscard]] Variant get(const Variant& object, std::u16string_view property);
void let(const Variant& object, std::u16string_view property, Variant value);

}  // namespace kap::late
