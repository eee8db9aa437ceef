#pragma once

#include <string>
#include <string_view>

#include "data/dialects/sql_dialect.hpp"

// The dialects that there are, and what they have in common.
namespace kap::ado {

[[nodiscard]] const SqlDialect& transactSql();  // of a server
[[nodiscard]] const SqlDialect& embeddedSql();
[[nodiscard]] const SqlDialect& postgresSql();

namespace dialects {

// "(9,2)", or "(9)".
[[nodiscard]] std::string inParentheses(int first, int second = -1);
[[nodiscard]] bool isNumeric(DataTypeEnum type);
[[nodiscard]] bool isBinary(DataTypeEnum type);
// The plain text of a value without the braces of an identifier, and a time in the form that
// servers read alike, whatever their settings.
[[nodiscard]] std::string literalText(const ColumnDefinition& column, const std::string& text);

inline constexpr int kMoneyDigits = 19;
inline constexpr int kMoneyScale = 4;

}  // namespace dialects

}  // namespace kap::ado
