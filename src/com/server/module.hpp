#pragma once

#include <windows.h>

#include <string>

namespace kap::com {

// The module itself, once the system has loaded it.
[[nodiscard]] HMODULE thisModule() noexcept;
void setModule(HMODULE module) noexcept;

// The whole path of its file.
[[nodiscard]] std::u16string modulePath();

}  // namespace kap::com
