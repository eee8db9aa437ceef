#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/wide_integer.hpp"

// Arithmetic on whole numbers that stand for decimals, with intermediate results of 128 bits.
namespace kap::engine {

#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
#else
using Wide = WideInteger;
#endif

// Powers above are not representable in a Wide.
inline constexpr int kMaxPower = 38;

// 10^exponent, exponent from 0 to kMaxPower.
[[nodiscard]] Wide powerOfTen(int exponent);

enum class Rounding { HalfAway, Truncate };

// numerator / denominator, which is not 0.
[[nodiscard]] Wide divide(Wide numerator, Wide denominator, Rounding rounding);

// The value with `to` digits behind the point instead of `from`; nullopt when it does not fit in
// 128 bits.
[[nodiscard]] std::optional<Wide> rescale(Wide value, int from, int to, Rounding rounding);

// left * right; nullopt when it does not fit in 128 bits.
[[nodiscard]] std::optional<Wide> multiply(Wide left, Wide right);

// The value as 64 bits, if it fits.
[[nodiscard]] std::optional<std::int64_t> narrow(Wide value);

struct ScaledNumber {
    Wide value = 0;
    int scale = 0;
};

// Reads "[+-]digits[.digits]"; nullopt for anything else and for more digits than a Wide holds.
// Blanks are not expected.
[[nodiscard]] std::optional<ScaledNumber> parseScaled(std::string_view text);

// "-12.50" for -1250 with scale 2.
[[nodiscard]] std::string scaledText(std::int64_t value, int scale);

// The nearest double of value / 10^scale.
[[nodiscard]] double scaledToDouble(std::int64_t value, int scale);

}  // namespace kap::engine
