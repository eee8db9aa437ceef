#pragma once

#include <windows.h>

#include <oleauto.h>

#include <vector>

#include <kaputil/automation/variant.hpp>

namespace kap::platform::automation {

// An enumeration of values as the system's clients take it (`For Each`), with a reference of the
// caller's.
[[nodiscard]] IUnknown* enumerationOf(std::vector<Variant> elements);

// How many there are.
[[nodiscard]] long liveEnumerations() noexcept;

}  // namespace kap::platform::automation
