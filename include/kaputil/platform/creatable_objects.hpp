#pragma once

#include <functional>
#include <span>
#include <string_view>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/base/export.hpp>

// Objects of the host and of the client that the library reaches by name, late-bound: the
// file-system object, the mail client.
namespace kap {

using ObjectFactory = std::function<Ref<Object>()>;

// Makes `factory` answer for a programmatic name from now on, in every thread and before any class
// of that name: this is how a company plugs in its own mail client, or a test its own form.
// Registering again replaces the factory. Raises 5 for an empty name or factory.
KAPUTIL_EXPORT void registerFactory(std::u16string_view programmaticName, ObjectFactory factory);

// Takes the factory away again; the name then stands for what it stood for before. Nothing happens
// when there is none.
KAPUTIL_EXPORT void unregisterFactory(std::u16string_view programmaticName);

// The factory that a client registered for a name, compared ignoring case; empty when there is
// none.
[[nodiscard]] KAPUTIL_EXPORT ObjectFactory registeredFactory(std::u16string_view programmaticName);

// A class of the host that can be created by name.
struct PlatformClass {
    String programmaticName;  // "Scripting.FileSystemObject"
    const ClassDescription* description = nullptr;
};

namespace platform {

// The classes that stand in for those that the host lacks: the file-system object and the mail
// client. Empty where the host has them.
[[nodiscard]] KAPUTIL_EXPORT std::span<const PlatformClass> hostClasses();

// The classes of the objects that members of these give where any object may come: messages and
// contacts of the mail client.
[[nodiscard]] KAPUTIL_EXPORT std::span<const ClassReference> hostObjectClasses();

// A new object of the host by its programmatic name: of the classes above, or of any that is
// registered there. Null when there is none of that name; raises what its making raises.
[[nodiscard]] KAPUTIL_EXPORT Ref<Object> createHostObject(std::u16string_view programmaticName);

// A new object by its programmatic name: of the client's factory, or else of the host's class.
// Raises 429 for any other name.
[[nodiscard]] KAPUTIL_EXPORT Ref<Object> createObject(std::u16string_view programmaticName);

}  // namespace platform
}  // namespace kap
