#include <algorithm>

#include "ado/embedded/translate/binder.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::ServerError;

std::string Binder::commonTables(const std::vector<tsql::CommonTable>& tables, Scope* outer) {
    std::string sql;
    for (const tsql::CommonTable& table : tables) {
        const bool repeated =
            std::any_of(tables.begin(), tables.end(), [&](const tsql::CommonTable& other) {
                return &other != &table && sameName(other.name, table.name);
            });
        if (repeated) {
            throw ServerError(
                239, "Duplicate common table expression name '" + table.name + "' was specified.",
                table.query->line);
        }
        sql += (sql.empty() ? "WITH RECURSIVE " : ", ") + commonTable(table, outer);
    }
    return sql.empty() ? sql : sql + " ";
}

// A table that reads itself has the columns of its first term, so that is bound first, alone.
std::string Binder::commonTable(const tsql::CommonTable& table, Scope* outer) {
    const std::size_t mark = commonNames_.size();
    const auto named = [&](std::vector<OutputColumn> columns) {
        if (!table.columns.empty() && table.columns.size() != columns.size()) {
            const bool more = table.columns.size() < columns.size();
            throw ServerError(more ? 8158 : 8159,
                              "'" + table.name + "' has " + (more ? "more" : "fewer") +
                                  " columns than were specified in the column list.",
                              table.query->line);
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (!table.columns.empty()) columns[i].name = table.columns[i];
            Typed& value = columns[i].value;
            value = Typed::expression(numberedName(i), value.type, true);
        }
        checkOwnNames(columns, table.name, table.query->line);
        return columns;
    };
    if (table.query->terms.size() > 1) {
        const auto* first = std::get_if<tsql::Select>(&table.query->terms.front().node);
        if (first != nullptr) {
            BoundSelect anchor = term(table.query->terms.front(), {}, outer);
            commonNames_.push_back({table.name, named(std::move(anchor.items))});
        }
    }
    BoundQuery bound = query(*table.query, outer, QueryPlace::Nested);
    commonNames_.resize(mark);
    std::string list;
    for (std::size_t i = 0; i < bound.columns.size(); ++i)
        list += (i == 0 ? "" : ", ") + numberedName(i);
    commonNames_.push_back({table.name, named(std::move(bound.columns))});
    return sqlName(table.name) + " (" + list + ") AS (" + bound.sql + ")";
}

// The innermost one of that name.
const Binder::CommonName* Binder::findCommon(const tsql::ObjectName& name) const {
    if (name.parts.size() != 1) return nullptr;
    const auto found =
        std::find_if(commonNames_.rbegin(), commonNames_.rend(),
                     [&](const CommonName& common) { return sameName(common.name, name.last()); });
    return found == commonNames_.rend() ? nullptr : &*found;
}

}  // namespace kap::ado::embedded
