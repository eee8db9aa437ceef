#pragma once

#include <optional>
#include <vector>

#include "engine/binder/bound_expression.hpp"
#include "tsql/syntax.hpp"
#include "tsql/type_spec.hpp"

// What types expressions have: the server's precedence and its rules for decimals.
namespace kap::engine {

// The type in which two values meet, as in CASE, UNION and IN: the one of higher precedence, wide
// enough for both.
[[nodiscard]] tsql::TypeSpec commonType(const tsql::TypeSpec& left, const tsql::TypeSpec& right);

// The common type of all that are not the word NULL; nullopt when all are.
[[nodiscard]] std::optional<tsql::TypeSpec> commonType(const std::vector<BoundExpression>& values);

// A number's type as the decimal that holds all its values: int is decimal(10,0), money is
// decimal(19,4).
[[nodiscard]] tsql::TypeSpec asDecimal(const tsql::TypeSpec& type);

// The type of an operation on decimals: precision and scale are the server's, up to 38 digits.
// Beyond, decimals are given up for the whole part, but never the first six.
[[nodiscard]] tsql::TypeSpec decimalResult(tsql::BinaryOperator op, const tsql::TypeSpec& left,
                                           const tsql::TypeSpec& right);

// A decimal type of that precision and scale after both are brought within those bounds.
[[nodiscard]] tsql::TypeSpec boundedDecimal(int precision, int scale);

// The variable text type in which a value of a type fits without loss.
[[nodiscard]] tsql::TypeSpec textTypeOf(const tsql::TypeSpec& type);

// The type of two texts or binaries joined.
[[nodiscard]] tsql::TypeSpec joinedType(const tsql::TypeSpec& left, const tsql::TypeSpec& right);

// Whether storage form changes on the way from one type to another.
[[nodiscard]] bool needsConversion(const tsql::TypeSpec& from, const tsql::TypeSpec& to);

}  // namespace kap::engine
