#pragma once

#include <string>
#include <string_view>

#include "engine/values/value.hpp"

// Values as FOR XML and FOR JSON write them, before anything is escaped.
namespace kap::engine {

// The text of a value that is not null: dates in ISO form (a fraction of zero is left out), floats
// with an exponent, amounts with four decimals, bytes in base64.
[[nodiscard]] std::string formattedValue(const Value& value, const tsql::TypeSpec& type);

[[nodiscard]] std::string base64(std::string_view bytes);

}  // namespace kap::engine
