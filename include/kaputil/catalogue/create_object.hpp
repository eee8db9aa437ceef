#pragma once

#include <string_view>

#include <kaputil/automation/object.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/platform/creatable_objects.hpp>

namespace kap {

// A new object by its programmatic name, compared ignoring case: "KapUtil.CProprieta",
// "ADODB.Connection", or a name for which the client registered a factory. Raises 429 for a name
// that stands for nothing or for a class that cannot be created.
[[nodiscard]] KAPUTIL_EXPORT Ref<Object> createObject(std::u16string_view programmaticName);

}  // namespace kap
