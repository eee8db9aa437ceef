#include <algorithm>

#include "ado/embedded/translate/binder.hpp"
#include "ado/embedded/translate/statements.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::ServerError;

std::string Binder::commonTables(const std::vector<tsql::CommonTable>& tables, Scope* outer,
                                 const tsql::ObjectName* target) {
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
        const bool isTarget =
            target != nullptr && target->parts.size() == 1 && sameName(target->last(), table.name);
        sql += (sql.empty() ? "WITH RECURSIVE " : ", ") +
               (isTarget ? targetTable(table, outer) : commonTable(table, outer));
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

// UPDATE and DELETE of a common table write the one table that it reads.
std::string Binder::targetTable(const tsql::CommonTable& table, Scope* outer) {
    const auto* select = table.query->terms.size() == 1
                             ? std::get_if<tsql::Select>(&table.query->terms.front().node)
                             : nullptr;
    const bool plain = select != nullptr && !select->distinct && select->groupBy.empty() &&
                       !select->having && select->from.size() == 1;
    const auto* named =
        plain ? std::get_if<tsql::NamedTable>(&select->from.front()->node) : nullptr;
    const Table* base = named == nullptr ? nullptr : findTable(named->name, names_);
    if (base == nullptr) {
        throw ServerError(4421,
                          "Derived table '" + table.name +
                              "' is not updatable because a column of the derived table is derived "
                              "or constant.",
                          table.query->line);
    }
    BoundSelect bound = term(table.query->terms.front(), table.query->orderBy, outer);
    bound.order = orderText(table.query->orderBy, bound);
    std::vector<OutputColumn> columns = bound.items;
    const std::string& source = named->alias.empty() ? base->name : named->alias;
    bound.items.push_back({"", Typed::expression(sqlName(source) + "." + rowNumberName(*base),
                                                 {tsql::SqlType::BigInt}, false)});
    std::string list;
    for (std::size_t i = 0; i < bound.items.size(); ++i)
        list += (i == 0 ? "" : ", ") + numberedName(i);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i < table.columns.size()) columns[i].name = table.columns[i];
        columns[i].value = Typed::expression(numberedName(i), columns[i].value.type, true);
    }
    commonTarget_ = {base, numberedName(columns.size())};
    commonNames_.push_back({table.name, std::move(columns)});
    return sqlName(table.name) + " (" + list + ") AS (" + selectText(bound) + ")";
}

std::optional<BoundSource> Binder::targetSource(const tsql::ObjectName& target) const {
    if (commonTarget_.table == nullptr) return std::nullopt;
    return commonSource(*findCommon(target), target.last());
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
