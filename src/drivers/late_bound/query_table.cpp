#include "drivers/late_bound/query_table.hpp"

#include "platform/stack.hpp"
#include "tsql/analysis/query_sources.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::late_bound {
namespace {

// A star stands for every column, whatever stands beside it.
std::optional<std::vector<std::string>> columnsOf(const std::vector<tsql::QueryItem>& items) {
    std::vector<std::string> columns;
    for (const tsql::QueryItem& item : items) {
        if (item.kind == tsql::QueryItem::Kind::Star) {
            return std::nullopt;
        }
        columns.push_back(item.column);
    }
    return columns;
}

}  // namespace

std::optional<QueryTable> tableOfQuery(std::string_view script) {
    platform::learnStack();
    try {
        const tsql::QuerySources sources = tsql::sourcesOf(script);
        if (!sources.isReadable || sources.isCombined || sources.tables.size() != 1) {
            return std::nullopt;
        }
        const tsql::QueryTable& table = sources.tables.front();
        return QueryTable{table.written, table.name, columnsOf(sources.items)};
    } catch (const tsql::ServerError&) {
        return std::nullopt;  // another database's dialect
    }
}

}  // namespace kap::ado::late_bound
