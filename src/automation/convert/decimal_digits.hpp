#pragma once

#include <optional>
#include <string_view>

#include <kaputil/automation/decimal.hpp>

namespace kap::convert {

// The decimal of `digits` times 10^`exponent`; digits are ASCII, without zeros in front. What does
// not fit is rounded off half to even; nullopt when the whole part does not fit.
[[nodiscard]] std::optional<Decimal> decimalOfDigits(std::string_view digits, int exponent,
                                                     bool negative);

}  // namespace kap::convert
