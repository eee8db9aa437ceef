#pragma once

#include <cstddef>
#include <string_view>

namespace kap::tsql {

// The bytes of the currency sign that a UTF-8 text begins with: "$", "€" or any other of those
// that amounts may carry; 0 when it begins with none.
[[nodiscard]] std::size_t currencySignAt(std::string_view text);

}  // namespace kap::tsql
