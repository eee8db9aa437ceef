#include "ado/embedded/translate/statements.hpp"

#include <algorithm>

#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::ServerError;

namespace {

// Which source of FROM the target means: the alias, or the only use of the table.
const Source* findTarget(const tsql::ObjectName& target, const std::vector<Source>& sources) {
    for (const Source& source : sources) {
        if (target.parts.size() == 1 && sameName(source.name, target.last())) return &source;
    }
    const Source* found = nullptr;
    for (const Source& source : sources) {
        const std::string& own = source.table != nullptr ? source.table->name : source.common;
        if (!sameName(own, target.last())) continue;
        if (found != nullptr) {
            throw ServerError(8154, "The table '" + target.text() + "' is ambiguous.", target.line,
                              15);
        }
        found = &source;
    }
    return found;
}

}  // namespace

std::string rowVersionCall() {
    return "kap_rowversion()";
}

std::string identityCall(const std::string& table) {
    return callText("kap_identity", sqlText(table));
}

std::string givenIdentity(const Table& table, const std::string& value) {
    return callText("kap_identity_given", sqlText(table.name), value);
}

std::string rowNumberName(const Table& table) {
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        if (table.find(name) == nullptr) return name;
    }
    throw tsql::unsupported("a table with columns rowid, _rowid_ and oid", 0);
}

void addChecks(Translation& translation, const Binder& binder) {
    const std::vector<std::string>& checks = binder.commonTarget().checks;
    if (checks.empty()) return;
    if (!translation.capture) translation.capture.emplace();
    translation.capture->checks = checks;
}

bool isPositioned(const tsql::ExpressionPtr& where) {
    return where != nullptr && std::holds_alternative<tsql::CurrentOfPredicate>(where->node);
}

TargetRows bindTarget(Binder& binder, const tsql::ObjectName& target,
                      const std::vector<tsql::TableSourcePtr>& from,
                      const tsql::ExpressionPtr& where, const std::optional<tsql::TopClause>& top,
                      Scope& scope) {
    TargetRows rows;
    BoundSource bound = binder.from(from, scope);
    const Source* found = findTarget(target, bound.sources);
    if (found != nullptr) {
        rows.table = found->table;
        const Binder::CommonTarget& common = binder.commonTarget();
        if (rows.table == nullptr && common.table != nullptr) {
            rows.table = common.table;
            rows.rowNumber = sqlName(found->name) + "." + common.rowNumber;
        } else if (rows.table == nullptr) {
            throw ServerError(4406,
                              "Update or delete of view or function '" + target.text() +
                                  "' failed because it is a derived table.",
                              target.line);
        } else {
            rows.rowNumber = sqlName(found->name) + "." + rowNumberName(*rows.table);
        }
    } else if (auto common = binder.targetSource(target)) {
        rows.table = binder.commonTarget().table;
        rows.rowNumber = sqlName(target.last()) + "." + binder.commonTarget().rowNumber;
        bound.sql =
            bound.sql.empty() ? common->sql : common->sql + " CROSS JOIN (" + bound.sql + ")";
        bound.sources.insert(bound.sources.begin(), std::move(common->sources.front()));
    } else {
        const Table& table = requireTable(target, binder.names());
        rows.table = &table;
        rows.rowNumber = sqlName(table.name) + "." + rowNumberName(table);
        const std::string own =
            tableSql(table.name, table.temporary) + " AS " + sqlName(table.name);
        bound.sql = bound.sql.empty() ? own : own + " CROSS JOIN (" + bound.sql + ")";
        bound.sources.insert(bound.sources.begin(), Binder::tableSource(table, table.name));
    }
    scope.sources = std::move(bound.sources);
    rows.tail = " FROM " + bound.sql;
    if (where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        rows.tail += " WHERE " + binder.condition(*where, scope);
    }
    if (top) {
        if (top->percent) throw tsql::unsupported("TOP PERCENT in UPDATE or DELETE", target.line);
        rows.limit = " LIMIT " + binder.limitText(*top, scope);
    } else if (const std::int64_t most = binder.names().settings().rowLimit; most > 0) {
        rows.limit = " LIMIT " + tsql::integerText(most);
    }
    return rows;
}

}  // namespace kap::ado::embedded
