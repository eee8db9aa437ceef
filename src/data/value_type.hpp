#pragma once

#include <cstdint>

#include <kaputil/automation/variant.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

// The bytes that a value of a fixed-width type takes; 0 for texts and binaries, whose size is their
// own.
[[nodiscard]] std::int32_t widthOf(DataTypeEnum type) noexcept;

// Text and binary without limit.
[[nodiscard]] bool isLongType(DataTypeEnum type) noexcept;

[[nodiscard]] bool isDecimalType(DataTypeEnum type) noexcept;

// The digits of a decimal whose values are kept as whole numbers.
inline constexpr std::uint8_t kWidestDecimal = 18;

// The digits that the values of a type have in all, and after the point; 255: the type has none.
[[nodiscard]] std::uint8_t usualPrecision(DataTypeEnum type) noexcept;
[[nodiscard]] std::uint8_t usualScale(DataTypeEnum type) noexcept;

// Whether a column or a parameter can be of this type.
[[nodiscard]] bool isColumnType(DataTypeEnum type) noexcept;

// The type in which a value goes to the database when nothing else says so.
[[nodiscard]] DataTypeEnum dataTypeOf(const Variant& value);

}  // namespace kap::ado
