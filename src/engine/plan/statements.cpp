#include "engine/plan/statements.hpp"

#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;

namespace {

const tsql::NamedTable* namedBy(const std::string& alias, const tsql::TableSource& source) {
    if (const auto* table = std::get_if<tsql::NamedTable>(&source.node)) {
        return sameName(table->alias, alias) ? table : nullptr;
    }
    const auto* join = std::get_if<tsql::Join>(&source.node);
    if (join == nullptr) return nullptr;
    const tsql::NamedTable* found = namedBy(alias, *join->left);
    return found != nullptr ? found : namedBy(alias, *join->right);
}

// Which source of FROM the target means: the alias, or the only use of the table.
std::optional<std::size_t> findTarget(const tsql::ObjectName& target,
                                      const std::vector<Source>& sources, const Binder& binder) {
    if (target.parts.size() == 1) {
        const auto named = std::ranges::find_if(
            sources, [&](const Source& source) { return sameName(source.name, target.last()); });
        if (named != sources.end()) return static_cast<std::size_t>(named - sources.begin());
    }
    const Table* table = findTable(target, binder.names());
    const std::string common = binder.commonNameFor(target);
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const bool meant = sources[i].table != nullptr ? sources[i].table == table
                                                       : sameName(sources[i].common, common);
        if (!meant) continue;
        if (found) {
            throw ServerError(tsql::Message::AmbiguousTable, {target.text()}, target.line);
        }
        found = i;
    }
    return found;
}

// A target that FROM does not list stands beside it.
void addTarget(BoundSource target, BoundSource& from, int line) {
    if (!from.from.empty()) {
        sql::join(target.from, sql::JoinOperator::Inner, std::move(from.from));
    }
    from.from = std::move(target.from);
    from.sources.insert(from.sources.begin(), std::move(target.sources.front()));
    Binder::checkNames(from.sources, line);
}

}  // namespace

const tsql::ObjectName& targetName(const tsql::ObjectName& target,
                                   const std::vector<tsql::TableSourcePtr>& from) {
    if (target.parts.size() != 1) return target;
    for (const tsql::TableSourcePtr& source : from) {
        if (const tsql::NamedTable* named = namedBy(target.last(), *source)) return named->name;
    }
    return target;
}

sql::Expression rowVersionCall() {
    return sql::call(fn::kRowversion);
}

sql::Expression identityCall(const std::string& table) {
    return sql::call(fn::kIdentity, sql::text(table));
}

sql::Expression givenIdentity(const Table& table, sql::Expression value) {
    return sql::call(fn::kIdentityGiven, sql::text(table.name), std::move(value));
}

sql::Expression defaultOf(const Column& column) {
    return column.defaultSql ? sql::Expression(sql::Definition{*column.defaultSql}) : sql::null();
}

StatementPlan finished(StatementPlan::Kind plan, const Binder& binder) {
    return {std::move(plan), binder.boundValues()};
}

WriteTarget writeTarget(const Table& table, const NameScope& names) {
    WriteTarget target;
    target.table = table.name;
    target.temporary = table.temporary;
    target.firingLevel = names.catalogue().firingLevel(table.name);
    return target;
}

void addChecks(std::optional<Capture>& capture, const Binder& binder) {
    const std::vector<sql::QueryTree>& checks = binder.commonTarget().checks;
    if (checks.empty()) return;
    if (!capture) capture.emplace();
    capture->checks.clear();
    capture->checks.reserve(checks.size());
    for (const sql::QueryTree& check : checks)
        capture->checks.push_back(sqlOf(*check));
}

bool isPositioned(const tsql::ExpressionPtr& where) {
    return where != nullptr && std::holds_alternative<tsql::CurrentOfPredicate>(where->node);
}

sql::Select TargetRows::select(std::vector<sql::Item> items) const {
    sql::Select result;
    result.items = std::move(items);
    result.from = from;
    result.where = where;
    return result;
}

TargetRows bindTarget(Binder& binder, const tsql::ObjectName& target,
                      const std::vector<tsql::TableSourcePtr>& from,
                      const tsql::ExpressionPtr& where, const std::optional<tsql::TopClause>& top,
                      Scope& scope) {
    BoundSource bound = binder.targetFrom(from, scope);
    auto found = findTarget(target, bound.sources, binder);
    if (!found) {
        auto common = binder.targetSource(target);
        addTarget(common ? std::move(*common) : binder.storedTable(target, ""), bound, target.line);
        found = 0;
    }
    TargetRows rows;
    const Source& source = bound.sources[*found];
    const Binder::CommonTarget& common = binder.commonTarget();
    if (source.table != nullptr) {
        rows.table = source.table;
        rows.rowNumber = rowNumberOf(source);
    } else if (common.table != nullptr && !source.common.empty() &&
               sameName(source.common, binder.commonNameFor(targetName(target, from)))) {
        rows.table = common.table;
        rows.rowNumber = numberedColumn(source.name, common.rowNumber);
    } else {
        throw ServerError(tsql::Message::DerivedViewNotUpdatable, {target.text()}, target.line);
    }
    scope.sources = std::move(bound.sources);
    scope.target = *found;
    rows.from = std::move(bound.from);
    if (where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        rows.where = binder.condition(*where, scope);
    }
    if (top && top->percent) {
        sql::Select count = sql::one(sql::Call{fn::kCount, {rows.rowNumber}, true}, rows.from);
        count.where = rows.where;
        rows.limit = binder.percentLimit(*top, sql::Subquery{std::move(count)}, scope);
    } else if (top) {
        rows.limit = binder.limit(*top, scope);
    } else if (const std::int64_t most = binder.names().settings().rowLimit; most > 0) {
        rows.limit = sql::number(most);
    }
    return rows;
}

}  // namespace kap::engine
