#include <algorithm>
#include <utility>

#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

bool hasAggregateItem(const tsql::Select& select) {
    return std::any_of(select.items.begin(), select.items.end(), [](const tsql::SelectItem& item) {
        if (const auto* assignment = std::get_if<tsql::AssignmentItem>(&item.node)) {
            return containsAggregate(*assignment->value);
        }
        const auto* expression = std::get_if<tsql::ExpressionItem>(&item.node);
        return expression != nullptr && containsAggregate(*expression->value);
    });
}

bool isAggregateQuery(const tsql::Select& select, const std::vector<tsql::OrderItem>& orderBy) {
    if (!select.groupBy.empty() || !select.groupingSets.empty() || select.having) return true;
    return hasAggregateItem(select) ||
           std::any_of(orderBy.begin(), orderBy.end(),
                       [](const tsql::OrderItem& item) { return containsAggregate(*item.value); });
}

// GROUP BY () and GROUPING SETS (()): one group of all rows, also of none.
bool isTotal(const tsql::Select& select) {
    return select.groupingSets.size() == 1 && select.groupingSets.front().empty();
}

bool hasSets(const tsql::Select& select) {
    return !select.groupingSets.empty() && !isTotal(select);
}

// SQLite makes one group of all rows only where the list has an aggregate.
void makeOneGroup(BoundExpression& item) {
    const sql::Expression counted = sql::isNotNull(sql::call(fn::kCount, sql::Star()));
    BoundExpression total =
        BoundExpression::expression(sql::when(counted, item.tree), item.type, true);
    total.collation = item.collation;
    total.coercibility = item.coercibility;
    item = std::move(total);
}

void addColumns(const Source& source, std::vector<OutputColumn>& items) {
    for (const SourceColumn& column : source.columns)
        items.push_back({column.name, column.value});
}

// The name of an item without alias: that of a plain column, as its source spells it, else none.
std::string itemName(const tsql::ExpressionItem& item, const Scope& scope) {
    if (!item.alias.empty()) return item.alias;
    const auto* column = std::get_if<tsql::ColumnReference>(&item.value->node);
    return column == nullptr ? std::string() : resolveColumn(column->name, scope).name;
}

void refuseLargeType(const BoundExpression& value, int line) {
    const SqlType type = value.type.type;
    if (type != SqlType::Text && type != SqlType::NText && type != SqlType::Image) return;
    throw ServerError(tsql::Message::LargeTypeNotComparable, {}, line);
}

}  // namespace

Binder::BoundSelect Binder::select(const tsql::Select& select,
                                   const std::vector<tsql::OrderItem>& orderBy, Scope* outer,
                                   int line) {
    BoundSelect bound;
    bound.scope = std::make_unique<Scope>();
    bound.scope->outer = outer;
    bound.tree.distinct = select.distinct;
    if (!select.from.empty()) {
        BoundSource source = from(select.from, *bound.scope);
        bound.scope->sources = std::move(source.sources);
        bound.tree.from = std::move(source.from);
    }
    if (!select.groupingSets.empty()) {
        sql::join(bound.tree.from, sql::JoinOperator::Cross,
                  groupingSetsSource(select.groupingSets.size()));
    }
    if (select.where) {
        bound.scope->aggregates = AggregateUse::RefusedInWhere;
        bound.tree.where = condition(*select.where, *bound.scope);
    }
    bound.grouped = isAggregateQuery(select, orderBy);
    if (bound.grouped) grouping(select, bound);
    bound.scope->aggregates = AggregateUse::Allowed;
    selectItems(select, bound, line);
    const bool wholly = select.groupBy.empty() && (isTotal(select) || select.having);
    if (wholly && !hasAggregateItem(select)) makeOneGroup(bound.items.front().value);
    for (std::size_t i = 0; i < bound.items.size(); ++i)
        requireCollation(bound.items[i].value, i + 1, line);
    if (select.having) {
        const Restored clause(bound.scope->groupedClause, "HAVING clause");
        const Restored windows(bound.scope->windowsRefused, true);
        bound.tree.having = condition(*select.having, *bound.scope);
    }
    if (select.top) {
        // The rows that a share is of can be counted beside them only where the counting need not
        // read the query around.
        const bool percent = select.top->percent;
        bound.ties = select.top->withTies;
        bound.ranked = bound.ties || (percent && outer != nullptr);
        // SQLite's LIMIT reads no columns: where those of a query around say how many, the rows are
        // numbered.
        bool readsOuter = false;
        bound.tree.limit = percent ? percentLimit(*select.top, bound)
                                   : limit(*select.top, *bound.scope, &readsOuter);
        bound.ranked = bound.ranked || readsOuter;
    }
    return bound;
}

void Binder::grouping(const tsql::Select& select, BoundSelect& bound) {
    std::vector<sql::Expression>& list = bound.tree.groups;
    std::vector<BoundExpression> groups;
    bound.scope->aggregates = AggregateUse::RefusedInGroupBy;
    for (const auto& expression : select.groupBy) {
        const Restored own(bound.scope->readsOwn, false);
        const Restored outer(bound.scope->readsOuter, false);
        const BoundExpression value = this->value(*expression, *bound.scope);
        refuseLargeType(value, expression->line);
        if (bound.scope->readsOuter && bound.scope->readsOwn) {
            throw tsql::unsupported("GROUP BY with columns of an outer query", expression->line);
        }
        if (value.constant() != nullptr || value.nullLiteral || bound.scope->readsOuter) {
            throw ServerError(tsql::Message::GroupByWithoutColumn, {}, expression->line);
        }
        list.push_back(collated(value));
        bound.scope->groups.push_back(value.tree);
        if (hasSets(select)) groups.push_back(value);
    }
    if (hasSets(select)) list = groupingSets(select, *bound.scope, groups);
    bound.scope->grouped = true;
}

void Binder::selectItems(const tsql::Select& select, BoundSelect& bound, int line) {
    for (const tsql::SelectItem& item : select.items) {
        if (const auto* star = std::get_if<tsql::StarItem>(&item.node)) {
            if (select.from.empty()) {
                throw ServerError(tsql::Message::NoTableToSelectFrom, {}, line);
            }
            const std::size_t first = bound.items.size();
            if (star->qualifier.parts.empty()) {
                for (const Source& source : bound.scope->sources)
                    addColumns(source, bound.items);
            } else {
                addColumns(resolveQualifier(star->qualifier, *bound.scope), bound.items);
            }
            if (!bound.grouped) continue;
            // Each column has to stand in GROUP BY.
            for (std::size_t i = first; i < bound.items.size(); ++i) {
                (void)resolveColumn({{bound.items[i].name}, item.line}, *bound.scope);
            }
            if (hasSets(select)) {
                throw tsql::unsupported("SELECT * with several grouping sets", line);
            }
            continue;
        }
        addItem(item, *bound.scope, bound.items);
    }
    if (!bound.tree.distinct) return;
    for (const OutputColumn& item : bound.items)
        refuseLargeType(item.value, line);
}

void Binder::addItem(const tsql::SelectItem& item, Scope& scope, std::vector<OutputColumn>& items) {
    if (const auto* assignment = std::get_if<tsql::AssignmentItem>(&item.node)) {
        items.push_back({"", value(*assignment->value, scope)});
        return;
    }
    const auto& expression = std::get<tsql::ExpressionItem>(item.node);
    items.push_back({itemName(expression, scope), value(*expression.value, scope)});
}

std::vector<OutputColumn> Binder::itemValues(const std::vector<tsql::SelectItem>& items,
                                             Scope& scope) {
    std::vector<OutputColumn> result;
    for (const tsql::SelectItem& item : items) {
        const auto* star = std::get_if<tsql::StarItem>(&item.node);
        if (star == nullptr) {
            addItem(item, scope, result);
        } else if (star->qualifier.parts.empty()) {
            for (const Source& source : scope.sources)
                addColumns(source, result);
        } else {
            addColumns(resolveQualifier(star->qualifier, scope), result);
        }
    }
    return result;
}

// TOP n PERCENT of the rows, which are counted first.
sql::Expression Binder::percentLimit(const tsql::TopClause& top, BoundSelect& bound) {
    if (bound.ranked) {
        return percentLimit(top, sql::Over{sql::call(fn::kCount, sql::Star()), sql::Window()},
                            *bound.scope);
    }
    const sql::Select kept = bound.tree;
    sql::Expression count = rowCount(selectOf(bound));
    bound.tree = kept;
    return percentLimit(top, std::move(count), *bound.scope);
}

sql::Expression Binder::percentLimit(const tsql::TopClause& top, sql::Expression count,
                                     Scope& scope) {
    Scope constants;
    constants.outer = &scope;
    constants.limitsRows = true;
    const BoundExpression percent = value(*top.count, constants);
    const BoundExpression share = convertTo(percent, {tsql::SqlType::Float}, top.count->line);
    return sql::call(fn::kTopPercent, std::move(count), share.tree);
}

sql::Expression Binder::limit(const tsql::TopClause& top, Scope& scope, bool* readsOuter) {
    Scope constants;
    constants.outer = &scope;
    constants.limitsRows = true;
    constants.limitReadsOuter = readsOuter != nullptr;
    BoundExpression count = value(*top.count, constants);
    const int line = top.count->line;
    if (readsOuter != nullptr) *readsOuter = constants.readsOuter;
    // 9223372036854775807 is written by programs, and is a decimal.
    const bool whole =
        count.constant() != nullptr && tsql::isDecimal(count.type.type) && count.type.scale == 0;
    if (whole) count = convertTo(count, {SqlType::BigInt}, line);
    if (count.nullLiteral || !tsql::isInteger(count.type.type)) {
        throw ServerError(tsql::Message::RowCountNotInteger, {}, line);
    }
    if (count.constant() == nullptr) return sql::call(fn::kTop, count.tree);
    if (std::get<std::int64_t>(*count.constant()) < 0) {
        throw ServerError(tsql::Message::NegativeRowCount, {}, line);
    }
    return count.tree;
}

}  // namespace kap::engine
