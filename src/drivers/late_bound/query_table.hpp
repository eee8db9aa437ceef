#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kap::ado::late_bound {

// The one table that a query reads.
struct QueryTable {
    std::string name;  // as the query writes it: "dbo.Clienti"
    std::string last;  // of the table alone: "Clienti"
    // The columns behind what is selected, in its order, empty for an expression; nullopt when
    // every column is (`*`).
    std::optional<std::vector<std::string>> columns;
};

// nullopt when the script is not a single query, or the query reads several tables, joins rows
// together or cannot be read: its rows belong to no table then.
[[nodiscard]] std::optional<QueryTable> tableOfQuery(std::string_view script);

}  // namespace kap::ado::late_bound
