#pragma once

#include <span>

#include <kaputil/automation/locale.hpp>

namespace kap {

// Every locale that the library knows; the first is the one of most users, and the first of
// a language stands for the language.
[[nodiscard]] std::span<const Locale> knownLocales() noexcept;

}  // namespace kap
