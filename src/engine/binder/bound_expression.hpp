#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/catalog/tables.hpp"
#include "engine/sqlite/expression_tree.hpp"
#include "engine/sqlite/query_tree.hpp"
#include "engine/values/row_format.hpp"
#include "engine/values/text_collation.hpp"
#include "engine/values/value.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// Whose order of texts wins where two meet: that of COLLATE, of a column, of anything else. Columns
// of two orders have none together.
enum class Coercibility : std::uint8_t { Default, Implicit, Explicit, None };

// An expression that has been bound: its tree, which yields storage form, and its static type.
struct BoundExpression {
    sql::Expression tree;
    tsql::TypeSpec type;
    bool nullable = true;
    // The word NULL: it takes the type of what it meets.
    bool nullLiteral = false;
    // A column as it is: SQLite knows its collation.
    bool plainColumn = false;
    // A literal; see constant().
    bool isLiteral = false;
    // Of a plain column of a stored table.
    const Table* table = nullptr;
    const Column* column = nullptr;
    // The sum or the joined texts that this is, for a longer one to take over. Texts that are cut
    // to the longest one are a conversion of these.
    sql::Expression chain = {};
    // The order that COLLATE says, here or of a column; null: that of its type. Without an order
    // it tells what does not go together.
    std::shared_ptr<const TextCollation> collation = nullptr;
    Coercibility coercibility = Coercibility::Default;
    // A text that is XML or JSON to FOR XML and FOR JSON.
    Markup markup = Markup::None;
    // IDENTITY(...) of SELECT ... INTO, whose numbers are given when the rows are written.
    std::optional<Identity> newIdentity = std::nullopt;

    [[nodiscard]] static BoundExpression expression(sql::Expression tree,
                                                    const tsql::TypeSpec& type, bool nullable) {
        BoundExpression result;
        result.tree = std::move(tree);
        result.type = type;
        result.nullable = nullable;
        return result;
    }
    // The value of a literal, which is converted now and not for each row; null for anything else.
    [[nodiscard]] const Value* constant() const {
        const auto* found = isLiteral ? tree.as<sql::Constant>() : nullptr;
        return found == nullptr ? nullptr : &found->value;
    }
    // The same value under another type of the same storage form.
    [[nodiscard]] BoundExpression as(const tsql::TypeSpec& other) const;
    // The same value as what is around its query reads it: by a column of that query.
    [[nodiscard]] BoundExpression readBy(sql::Expression reader) const;
    [[nodiscard]] static BoundExpression literal(const Value& value, const tsql::TypeSpec& type);
    // NULL as a value of a type.
    [[nodiscard]] static BoundExpression nullOf(const tsql::TypeSpec& type);
    [[nodiscard]] static BoundExpression null();
};

// Another tree in the order in which an expression is compared: a place of it.
[[nodiscard]] sql::Expression inOrderOf(const BoundExpression& expression, sql::Expression tree);

// An expression with the collation of texts, where SQLite would not apply it by itself.
[[nodiscard]] sql::Expression collated(const BoundExpression& expression);
// The same for an expression in whose place another tree stands: a constant that is bound.
[[nodiscard]] sql::Expression collated(const BoundExpression& expression, sql::Expression tree);

// A value as the column of a query that is read by its place from 0.
[[nodiscard]] sql::Item numberedItem(sql::Expression value, std::size_t index);
// The names of a query's first columns by their places: c1, c2...
[[nodiscard]] std::vector<std::string> numberedNames(std::size_t count);
// Such a column by its place from 0, as an expression; of a source, or of the only one there is.
[[nodiscard]] sql::Expression numberedColumn(std::size_t index);
[[nodiscard]] sql::Expression numberedColumn(const std::string& source, std::size_t index);

// How many rows a query has.
[[nodiscard]] sql::Expression rowCount(sql::QueryTree query);

}  // namespace kap::engine
