#include "drivers/late_bound/query_table.hpp"

#include "platform/stack.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::late_bound {
namespace {

// The only SELECT of a query that is one of its rows' table; null otherwise.
const tsql::Select* plainSelect(const tsql::Script& script) {
    if (script.size() != 1) {
        return nullptr;
    }
    const auto* statement = std::get_if<tsql::SelectStatement>(&script.front().node);
    if (statement == nullptr || statement->query->terms.size() != 1 ||
        !statement->query->commonTables.empty()) {
        return nullptr;
    }
    const auto* select = std::get_if<tsql::Select>(&statement->query->terms.front().node);
    if (select == nullptr || select->distinct || select->into || !select->groupBy.empty() ||
        select->having != nullptr || select->from.size() != 1) {
        return nullptr;
    }
    return select;
}

std::optional<std::vector<std::string>> columnsOf(const tsql::Select& select) {
    std::vector<std::string> columns;
    for (const tsql::SelectItem& item : select.items) {
        const auto* expression = std::get_if<tsql::ExpressionItem>(&item.node);
        if (expression == nullptr) {
            return std::nullopt;
        }
        const auto* column = std::get_if<tsql::ColumnReference>(&expression->value->node);
        columns.push_back(column == nullptr ? std::string() : column->name.last());
    }
    return columns;
}

}  // namespace

std::optional<QueryTable> tableOfQuery(std::string_view script) {
    platform::learnStack();
    try {
        const tsql::Script read = tsql::parseScript(script);
        const tsql::Select* select = plainSelect(read);
        if (select == nullptr) {
            return std::nullopt;
        }
        const auto* table = std::get_if<tsql::NamedTable>(&select->from.front()->node);
        if (table == nullptr) {
            return std::nullopt;
        }
        return QueryTable{table->name.text(), table->name.last(), columnsOf(*select)};
    } catch (const tsql::ServerError&) {
        return std::nullopt;  // another database's dialect
    }
}

}  // namespace kap::ado::late_bound
