#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/wide_integer.hpp"
#include "engine/values/value.hpp"

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

// left + right; nullopt when it does not fit in 128 bits.
[[nodiscard]] std::optional<Wide> sumOf(Wide left, Wide right);

// left * right / 10^drop and left * 10^shift / right, whatever the size of what is between;
// nullopt when the result does not fit in 128 bits. `right` of the second is not 0.
[[nodiscard]] std::optional<Wide> productWithout(Wide left, Wide right, int drop,
                                                 Rounding rounding);
[[nodiscard]] std::optional<Wide> quotientWith(Wide left, int shift, Wide right);

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
[[nodiscard]] std::string scaledText(Wide value, int scale);

// The nearest double of value / 10^scale.
[[nodiscard]] double scaledToDouble(Wide value, int scale);

// What no decimal reaches, on either side.
[[nodiscard]] Wide farthest(bool negative);

// An exact number as the sixteen bytes of a wide decimal.
[[nodiscard]] Blob wideBytes(Wide value);
[[nodiscard]] Wide wideFromBytes(std::string_view bytes);

// The whole number that a value of an exact type is kept as, in either form; not of Null.
[[nodiscard]] Wide exactOf(const Value& value);
// The same number in the form of a type, which must have room for it.
[[nodiscard]] Value exactValue(Wide value, const tsql::TypeSpec& type);

}  // namespace kap::engine
