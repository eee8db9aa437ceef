#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include <kaputil/ado/field.hpp>

// The values of a recordset's fields as texts that are the same whatever the user's language.
namespace kap::migrate {

// The name that the dialect has for a field's type: "int", "varchar", "timestamp", ...
[[nodiscard]] std::string typeNameOf(const ado::Field& field);

// Whether the field holds numbers, which are shown at the right of their column.
[[nodiscard]] bool isNumber(const ado::Field& field);

// The text of an exact number with at least so many decimals.
[[nodiscard]] std::string withDecimals(std::string text, std::size_t decimals);

// The current value, nullopt for Null: numbers with '.' and all decimals of their type, bits as 0
// and 1, dates as "2025-03-31 10:30:00", bytes as "0x0A1B", texts as they are.
[[nodiscard]] std::optional<std::string> cellText(const ado::Field& field);

}  // namespace kap::migrate
