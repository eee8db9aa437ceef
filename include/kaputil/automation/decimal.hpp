#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <kaputil/base/export.hpp>

namespace kap {

// The exact decimal of the automation runtime: a 96-bit whole number, a sign, and a scale of 0 to
// 28 that says how many of its digits stand after the decimal point.
class KAPUTIL_EXPORT Decimal {
public:
    static constexpr int kMaxScale = 28;

    constexpr Decimal() noexcept = default;
    explicit Decimal(std::int64_t value) noexcept : Decimal(value, 0) {}
    // `unscaled` / 10^`scale`; the scale is 0 to 28.
    Decimal(std::int64_t unscaled, int scale) noexcept;
    // From its parts, as `magnitude()`, `scale()` and `negative()` give them.
    constexpr Decimal(std::array<std::uint32_t, 3> magnitude, int scale, bool negative) noexcept
        : magnitude_(magnitude), scale_(static_cast<std::uint8_t>(scale)), negative_(negative) {}
    static Decimal fromUnsigned(std::uint64_t value) noexcept;

    // From plain ASCII text: optional '-', digits, at most one '.'. Digits that do not fit in 96
    // bits are rounded off half to even; nullopt when the whole part does not fit or when the text
    // is not of that form.
    static std::optional<Decimal> parse(std::string_view plain);
    // The decimal nearest to `value` with as many significant digits as its type surely carries: 15
    // of a double, 7 of a float. nullopt when it is out of range or not finite.
    static std::optional<Decimal> fromDouble(double value, int digits = 15);

    // Plain ASCII text with '.' as decimal point, without trailing zeros after it.
    [[nodiscard]] std::string plainText() const;
    [[nodiscard]] double toDouble() const;
    // The value times 10^`scale`, rounded half to even; nullopt when it needs more than 64 bits.
    [[nodiscard]] std::optional<std::int64_t> scaledTo(int scale) const;

    [[nodiscard]] bool negative() const noexcept { return negative_; }
    [[nodiscard]] int scale() const noexcept { return scale_; }
    // The whole number without scale and sign, least significant word first.
    [[nodiscard]] std::array<std::uint32_t, 3> magnitude() const noexcept { return magnitude_; }
    [[nodiscard]] bool isZero() const noexcept;

    // Equality of value: 1.0 equals 1.00.
    friend bool operator==(const Decimal& left, const Decimal& right) {
        return left.plainText() == right.plainText();
    }

private:
    std::array<std::uint32_t, 3> magnitude_{};
    std::uint8_t scale_ = 0;
    bool negative_ = false;
};

}  // namespace kap
