#pragma once

#include <cstdint>

namespace kap::cli {

// Of what is made for people to read.
enum class Language : std::uint8_t { Italian, English };

}  // namespace kap::cli
