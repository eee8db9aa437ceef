#pragma once

#include <string>
#include <string_view>

#include "data/dialects/sql_dialect.hpp"

// The dialects that there are, and what they have in common.
namespace kap::migrate {

[[nodiscard]] const CopyDialect& transactCopyDialect();  // of a server
[[nodiscard]] const CopyDialect& embeddedCopyDialect();
[[nodiscard]] const CopyDialect& postgresCopyDialect();

// "(9,2)", or "(9)".
[[nodiscard]] std::string inParentheses(int first, int second = -1);
[[nodiscard]] bool isNumeric(ado::DataTypeEnum type);
[[nodiscard]] bool isBinary(ado::DataTypeEnum type);
// The plain text of a value without the braces of an identifier, and a time in the form that
// servers read alike, whatever their settings.
[[nodiscard]] std::string literalText(const CopiedColumn& column, const std::string& text);

inline constexpr int kMoneyDigits = 19;
inline constexpr int kMoneyScale = 4;

}  // namespace kap::migrate
