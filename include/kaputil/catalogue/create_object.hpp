#pragma once

#include <functional>
#include <string_view>

#include <kaputil/frame/object.hpp>

namespace kap {

// A new object by its programmatic name, compared ignoring case: "KapUtil.CProprieta",
// "ADODB.Connection", or a name for which the client registered a factory. Raises 429 for a name
// that stands for nothing or for a class that cannot be created.
[[nodiscard]] Ref<Object> createObject(std::u16string_view programmaticName);

using ObjectFactory = std::function<Ref<Object>()>;

// Makes `factory` answer for a programmatic name from now on, in every thread and before any class
// of that name: this is how a company plugs in its own mail client, or a test its own form.
// Registering again replaces the factory. Raises 5 for an empty name or factory.
void registerFactory(std::u16string_view programmaticName, ObjectFactory factory);

// Takes the factory away again; the name then stands for what it stood for before. Nothing happens
// when there is none.
void unregisterFactory(std::u16string_view programmaticName);

}  // namespace kap
