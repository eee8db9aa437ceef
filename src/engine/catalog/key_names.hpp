#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kap::engine {

// The name of the key that the text of a table's making declares over these columns, in their
// order: CONSTRAINT name PRIMARY KEY (...) or UNIQUE (...). Empty when there is none. SQLite does
// not tell it otherwise, but the server's messages name it.
[[nodiscard]] std::string keyName(std::string_view createSql,
                                  const std::vector<std::string>& columns);

}  // namespace kap::engine
