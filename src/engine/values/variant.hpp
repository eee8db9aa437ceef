#pragma once

#include <compare>
#include <string>
#include <string_view>

#include "engine/values/value.hpp"

// sql_variant: a value with the type that it has by itself.
//
// It is kept as a text that says both: "int:5", "decimal(8,2):4627910", "varchar(20):Rossi",
// "binary(2):0A1B". In front stands the base type, behind the colon the value in storage form: a
// decimal as the whole number of its last digit, bytes as hexadecimal digits, all others as SQLite
// would print them. Texts have the collation of the database.
namespace kap::engine {

struct TypedValue {
    Value value;  // in storage form; never Null
    tsql::TypeSpec type;
};

// A value that is not Null as a sql_variant. What has no limit by its type takes the shortest type
// that holds the value. Error 8152 for what is longer than a sql_variant can be.
[[nodiscard]] std::string variantOf(const Value& value, const tsql::TypeSpec& type);

// The same back. Error 824 for a text that is none.
[[nodiscard]] TypedValue valueOfVariant(std::string_view variant);

// Whether a text is a sql_variant.
[[nodiscard]] bool isVariantText(std::string_view text);

// The order of the server: first by the families of the base types (identifiers, bytes, texts,
// exact numbers, approximate numbers, dates), within a family by what the values mean, so that an
// int and a decimal of the same number are equal.
[[nodiscard]] std::weak_ordering compareVariants(std::string_view left,
                                                 std::string_view right) noexcept;

// The bytes that the server takes for the value alone, and with what it notes of its type.
[[nodiscard]] int dataBytes(const TypedValue& value);
[[nodiscard]] int totalBytes(const TypedValue& value);

// A property by its name (case ignored), as SQL_VARIANT_PROPERTY tells it: a sql_variant itself, or
// Null for a name that is not known.
[[nodiscard]] Value variantProperty(std::string_view variant, std::string_view property);

}  // namespace kap::engine
