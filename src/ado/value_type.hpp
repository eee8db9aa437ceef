#pragma once

#include <cstdint>

#include <kaputil/ado/enumerations.hpp>
#include <kaputil/frame/variant.hpp>

namespace kap::ado {

// The bytes that a value of a fixed-width type takes; 0 for texts and binaries, whose size is their
// own.
[[nodiscard]] std::int32_t widthOf(DataTypeEnum type) noexcept;

// Text and binary without limit.
[[nodiscard]] bool isLongType(DataTypeEnum type) noexcept;

// Whether a column or a parameter can be of this type.
[[nodiscard]] bool isColumnType(DataTypeEnum type) noexcept;

// The type in which a value goes to the database when nothing else says so.
[[nodiscard]] DataTypeEnum dataTypeOf(const Variant& value);

}  // namespace kap::ado
