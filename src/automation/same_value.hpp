#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

#include <kaputil/automation/variant.hpp>

// Tells an argument that a member has assigned from one that it left alone: a variable passed by
// reference is written only when it was assigned, so that it keeps its type otherwise.
namespace kap {

// Whether two values are the very same: type, number, text, and of arrays and objects the one that
// both share. Nothing is converted, and 1.0 is not the Decimal 1.00.
[[nodiscard]] bool isSameValue(const Variant& before, const Variant& after);

// The same for values of one C++ type; numbers are compared bit by bit, so that a NaN is itself and
// the two zeros differ.
template <class T>
[[nodiscard]] bool isSameValue(const T& before, const T& after) {
    if constexpr (std::is_same_v<T, float>) {
        return std::bit_cast<std::uint32_t>(before) == std::bit_cast<std::uint32_t>(after);
    } else if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<std::uint64_t>(before) == std::bit_cast<std::uint64_t>(after);
    } else if constexpr (std::is_same_v<T, Date>) {
        return isSameValue(before.days, after.days);
    } else if constexpr (std::is_same_v<T, Decimal>) {
        return before.magnitude() == after.magnitude() && before.scale() == after.scale() &&
               before.negative() == after.negative();
    } else {
        return before == after;
    }
}

}  // namespace kap
