#pragma once

#include <initializer_list>
#include <string_view>
#include <vector>

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Calling members of any object by name, as a program does that does not know its class: one made
// by createObject, a form, what a collection holds. A value that is no object raises 424, the unset
// one 91, a member that there is not 438, and the member whatever it raises.
//
//     const kap::Variant files = kap::createObject(u"Scripting.FileSystemObject");
//     const kap::Variant text = kap::late::call(files, u"CreateTextFile", {u"prova.txt"});
//     kap::late::call(text, u"WriteLine", {u"prima riga"});
namespace kap::late {

// Calls a method, or reads a property with arguments. What the member writes into by-reference
// parameters is lost; Object::invoke gives it back.
KAPUTIL_EXPORT Variant call(const Variant& object, std::u16string_view member,
                            std::initializer_list<Variant> arguments = {});

// Reads a property, assigns it.
[[nodiscard]] KAPUTIL_EXPORT Variant get(const Variant& object, std::u16string_view property);
KAPUTIL_EXPORT void let(const Variant& object, std::u16string_view property, Variant value);

// What enumerating an array or a collection gives, in its order. Raises 438 for an object that is
// no collection, 13 for any other value.
[[nodiscard]] KAPUTIL_EXPORT std::vector<Variant> elements(const Variant& collection);

}  // namespace kap::late
