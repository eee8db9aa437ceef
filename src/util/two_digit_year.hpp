#pragma once

#include <string_view>

#include <kaputil/automation/string.hpp>

namespace kap::util {

// The year of a typed date: without one the current year, two characters in the library's own
// window (up to "70" in the 2000s, compared as text), any other text as it is.
[[nodiscard]] String fullYear(std::u16string_view year);

}  // namespace kap::util
