#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::OrderItem;
using tsql::ServerError;
using tsql::SqlType;

namespace {

[[noreturn]] void outOfRange(const std::string& position, int line) {
    throw ServerError(tsql::Message::OrderPositionOutOfRange, {position}, line);
}

// The item that a whole number in ORDER BY means, from 0.
std::optional<std::size_t> position(const OrderItem& item, std::size_t columns) {
    const auto* literal = std::get_if<tsql::Literal>(&item.value->node);
    if (literal == nullptr || literal->kind != tsql::LiteralKind::Integer) return std::nullopt;
    // More digits than any list has items.
    constexpr std::size_t kMostDigits = 6;
    if (literal->text.size() > kMostDigits) outOfRange(literal->text, item.value->line);
    std::size_t number = 0;
    for (const char digit : literal->text)
        number = number * 10 + static_cast<std::size_t>(digit - '0');
    if (number == 0 || number > columns) outOfRange(literal->text, item.value->line);
    return number - 1;
}

// The item that a bare name means; names of the select list come before those of tables.
std::optional<std::size_t> namedItem(const OrderItem& item,
                                     const std::vector<OutputColumn>& columns) {
    const auto* reference = std::get_if<tsql::ColumnReference>(&item.value->node);
    if (reference == nullptr || reference->name.parts.size() != 1) return std::nullopt;
    const std::string& name = reference->name.last();
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!sameName(columns[i].name, name)) continue;
        if (found && columns[*found].value.tree != columns[i].value.tree) {
            throw ServerError(tsql::Message::AmbiguousColumn, {name}, item.value->line);
        }
        if (!found) found = i;
    }
    return found;
}

void checkSortable(const BoundExpression& value, int line) {
    const SqlType type = value.type.type;
    if (type != SqlType::Text && type != SqlType::NText && type != SqlType::Image) return;
    throw ServerError(tsql::Message::LargeTypeNotComparable, {}, line);
}

sql::Expression byPosition(std::size_t index, const BoundExpression& value) {
    return inOrderOf(value, sql::number(static_cast<std::int64_t>(index) + 1));
}

// The terms of the items of ORDER BY, in their directions.
std::vector<sql::OrderTerm> orderTerms(std::vector<sql::Expression> terms,
                                       const std::vector<OrderItem>& items) {
    std::vector<sql::OrderTerm> result;
    result.reserve(terms.size());
    for (std::size_t i = 0; i < terms.size(); ++i) {
        const bool twice = std::ranges::any_of(
            result, [&](const sql::OrderTerm& before) { return before.value == terms[i]; });
        if (twice) throw ServerError(tsql::Message::OrderColumnTwice, {}, items[i].value->line);
        result.push_back({std::move(terms[i]), items[i].descending});
    }
    return result;
}

}  // namespace

void Binder::orderRows(const std::vector<OrderItem>& items, BoundSelect& bound) {
    std::vector<sql::Expression> terms;
    const Restored clause(bound.scope->groupedClause, "ORDER BY clause");
    for (const OrderItem& item : items) {
        const int line = item.value->line;
        auto index = position(item, bound.items.size());
        if (!index) index = namedItem(item, bound.items);
        if (index) {
            checkSortable(bound.items[*index].value, line);
            terms.push_back(byPosition(*index, bound.items[*index].value));
            bound.keys.push_back({index, {}, item.descending});
            continue;
        }
        const Restored outer(bound.scope->readsOuter, false);
        BoundExpression value = this->value(*item.value, *bound.scope);
        bound.ordersByOuter = bound.ordersByOuter || bound.scope->readsOuter;
        checkSortable(value, line);
        if (value.constant() != nullptr || value.nullLiteral) {
            throw ServerError(tsql::Message::ConstantInOrderBy,
                              {plain::text(static_cast<std::int64_t>(terms.size()) + 1)}, line);
        }
        const auto listed = std::ranges::find_if(bound.items, [&](const OutputColumn& column) {
            return column.value.tree == value.tree;
        });
        if (bound.tree.distinct && listed == bound.items.end()) {
            throw ServerError(tsql::Message::OrderByNotInDistinctList, {}, line);
        }
        terms.push_back(collated(value));
        if (bound.tree.distinct) index = static_cast<std::size_t>(listed - bound.items.begin());
        bound.keys.push_back({index, std::move(value), item.descending});
    }
    bound.tree.order = orderTerms(std::move(terms), items);
}

std::vector<sql::OrderTerm> Binder::orderedBy(const BoundSelect& select,
                                              std::vector<sql::Item>& columns) {
    std::vector<sql::OrderTerm> list;
    list.reserve(select.keys.size());
    for (const BoundSelect::OrderKey& key : select.keys) {
        const std::string own =
            "o" + plain::text(static_cast<std::int64_t>(&key - select.keys.data()));
        const BoundExpression& value = key.item ? select.items[*key.item].value : key.value;
        if (!key.item) columns.push_back({value.tree, own});
        list.push_back({inOrderOf(value, key.item ? numberedColumn(*key.item) : sql::column(own)),
                        key.descending});
    }
    return list;
}

std::vector<sql::OrderTerm> Binder::unionOrder(const std::vector<OrderItem>& items,
                                               const std::vector<OutputColumn>& columns) {
    std::vector<sql::Expression> terms;
    for (const OrderItem& item : items) {
        auto index = position(item, columns.size());
        if (!index) index = namedItem(item, columns);
        if (!index) {
            throw ServerError(tsql::Message::OrderByNotInUnionList, {}, item.value->line);
        }
        checkSortable(columns[*index].value, item.value->line);
        terms.push_back(byPosition(*index, columns[*index].value));
    }
    return orderTerms(std::move(terms), items);
}

}  // namespace kap::engine
