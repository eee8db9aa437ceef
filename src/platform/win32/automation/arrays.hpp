#pragma once

#include <windows.h>

#include <oleauto.h>

#include <kaputil/automation/array.hpp>

namespace kap::platform::automation {

// An array of the system's; an unset one is an array without elements.
[[nodiscard]] Array arrayFrom(SAFEARRAY* array);

// The way back, with elements of a type of the system's; the caller frees it. Raises 13 and 6 for
// elements that do not convert.
[[nodiscard]] SAFEARRAY* systemArray(const Array& array, VARTYPE element);

// The type of the system's for elements of a type.
[[nodiscard]] VARTYPE systemTypeOf(VarType type);

}  // namespace kap::platform::automation
