#pragma once

#include <cstdint>

#include <kaputil/automation/string.hpp>

namespace kap::ado::text_files {

// Raises an error of the text driver.
[[noreturn]] void failWith(std::int32_t number, const String& text);

}  // namespace kap::ado::text_files
