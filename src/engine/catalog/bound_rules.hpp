#pragma once

#include <string>
#include <string_view>

// Defaults and rules that are bound to columns: each stands in the table as a constraint whose name
// tells whose it is.
namespace kap::engine {

// The name of the constraint that binds a default or rule to a column of a table.
[[nodiscard]] std::string boundRuleName(std::string_view rule, std::string_view table,
                                        std::string_view column);

// Whether a constraint is one of them.
[[nodiscard]] bool isBoundRule(std::string_view constraint);
// Whether it binds that default or rule.
[[nodiscard]] bool bindsRule(std::string_view constraint, std::string_view rule);

}  // namespace kap::engine
