#pragma once

// Powers and products that are the same bits in every build, whatever its run-time library
// computes.
namespace kap {

// The double nearest to 10^`exponent`; 0 and infinity where there is none.
[[nodiscard]] double powerOfTen(int exponent) noexcept;

// As std::pow, and for whole exponents to a million the nearest double in every build. Other powers
// are the run-time library's, which may differ in the last bit.
[[nodiscard]] double power(double base, double exponent) noexcept;

// The product of two doubles without rounding: the nearest double, and what that lost. Both factors
// and the product are far from the greatest and the least double.
struct ExactProduct {
    double high;
    double low;
};
[[nodiscard]] ExactProduct exactProduct(double left, double right) noexcept;

}  // namespace kap
