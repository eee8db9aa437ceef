#pragma once

#include <cstdint>

#include <kaputil/frame/string.hpp>

namespace kap::host::text_source {

// Raises an error of the text driver.
[[noreturn]] void failWith(std::int32_t number, const String& text);

}  // namespace kap::host::text_source
