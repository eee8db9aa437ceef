#pragma once

#include <span>
#include <string_view>

#include <kaputil/frame/class_description.hpp>

namespace kap {

// A new object by its programmatic name, compared ignoring case: "KapUtil.CProprieta",
// "ADODB.Connection", ... Raises 429 for a name that stands for nothing or for a class that cannot
// be created.
[[nodiscard]] Ref<Object> createObject(std::u16string_view programmaticName);

// The descriptions of the classes that the library publishes.
[[nodiscard]] std::span<const ClassDescription* const> publishedClasses();

}  // namespace kap
