#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/binder/binder.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/values/text_collation.hpp"
#include "tsql/server_error.hpp"

// COLLATE: which order the texts of an operation are compared in.
namespace kap::engine {

using tsql::ServerError;

namespace {

// COLLATE as a function of the text and the name; no script can call it so, the word is reserved.
BoundExpression collatedAs(ScalarCall& call) {
    const BoundExpression& value = call[0];
    if (!tsql::isText(value.type.type) && !value.nullLiteral) {
        throw ServerError(tsql::Message::CollationOfOtherType, {tsql::typeName(value.type.type)},
                          call.line);
    }
    const auto* name = std::get_if<tsql::Literal>(&call.syntax.arguments[1]->node);
    BoundExpression result = value;
    result.collation = textCollation(name->text, call.line);
    result.coercibility = Coercibility::Explicit;
    if (result.collation == nullptr && value.collation == nullptr) return result;
    result.plainColumn = false;
    // SQLite would take that of the column.
    if (result.collation == nullptr) result.tree = sql::collated(value.tree, value.type);
    return result;
}

bool hasOwnOrder(const BoundExpression& value) {
    return value.collation != nullptr;
}

std::string_view nameOfOrder(const std::shared_ptr<const TextCollation>& collation) {
    return collation == nullptr ? std::string_view(kDatabaseCollation)
                                : std::string_view(collation->name);
}

// What two columns of different orders have together.
std::shared_ptr<const TextCollation> noOrder(const Coercion& before, const BoundExpression& value,
                                             const char* operation) {
    return std::make_shared<const TextCollation>(
        TextCollation{std::string(nameOfOrder(value.collation)),
                      {},
                      std::string(nameOfOrder(before.collation)),
                      operation});
}

// One operand more. The stronger order wins, and of two columns neither.
void meet(Coercion& together, const BoundExpression& value, const char* operation, int line) {
    const bool unresolved =
        value.coercibility == Coercibility::None || together.coercibility == Coercibility::None;
    const bool same = nameOfOrder(value.collation) == nameOfOrder(together.collation);
    if (unresolved) {
        const bool takes = together.coercibility != Coercibility::Explicit &&
                           value.coercibility >= Coercibility::Explicit &&
                           together.coercibility != value.coercibility;
        if (takes) together = {value.collation, value.coercibility};
        return;
    }
    if (value.coercibility > together.coercibility) {
        together = {value.collation, value.coercibility};
        return;
    }
    const bool equal = value.coercibility == together.coercibility;
    if (!equal || same || value.coercibility == Coercibility::Default) return;
    if (value.coercibility == Coercibility::Explicit) {
        throw ServerError(
            tsql::Message::CollationConflict,
            {nameOfOrder(value.collation), nameOfOrder(together.collation), operation}, line);
    }
    together = {noOrder(together, value, operation), Coercibility::None};
}

constexpr auto kCollating = std::to_array<ScalarFunction>({
    {"collate", 2, 2, collatedAs},
});

}  // namespace

std::span<const ScalarFunction> collatingFunctions() {
    return kCollating;
}

Coercion coerced(const std::vector<BoundExpression>& values, const char* operation, int line) {
    Coercion result;
    for (const BoundExpression& value : values) {
        if (!tsql::isText(value.type.type) || value.nullLiteral) continue;
        meet(result, value, operation, line);
    }
    return result;
}

void inheritCollation(BoundExpression& result, const std::vector<BoundExpression>& values,
                      const char* operation, int line) {
    if (!tsql::isText(result.type.type)) return;
    Coercion together = coerced(values, operation, line);
    result.collation = std::move(together.collation);
    result.coercibility = together.coercibility;
}

void requireCollation(const BoundExpression& value, std::size_t column, int line) {
    if (value.coercibility != Coercibility::None) return;
    const TextCollation& none = *value.collation;
    throw ServerError(tsql::Message::CollationConflictInColumn,
                      {none.name, none.other, none.operation, "SELECT",
                       plain::text(static_cast<std::int64_t>(column))},
                      line);
}

void requireCollation(const BoundExpression& value, const tsql::TypeSpec& into, int line) {
    if (value.coercibility != Coercibility::None) return;
    const TextCollation& none = *value.collation;
    throw ServerError(tsql::Message::CollationUnresolved,
                      {tsql::typeName(value.type.type), tsql::typeName(into.type), none.name,
                       none.other, none.operation},
                      line);
}

std::shared_ptr<const TextCollation> commonCollation(const std::vector<BoundExpression>& values,
                                                     const char* operation, int line) {
    if (std::ranges::none_of(values, hasOwnOrder)) return nullptr;
    Coercion together = coerced(values, operation, line);
    if (together.coercibility != Coercibility::None) return std::move(together.collation);
    const TextCollation& none = *together.collation;
    const bool here = std::ranges::none_of(values, [](const BoundExpression& value) {
        return value.coercibility == Coercibility::None;
    });
    if (here) {
        throw ServerError(tsql::Message::CollationConflict, {none.name, none.other, operation},
                          line);
    }
    throw ServerError(tsql::Message::CollationConflictWithin,
                      {none.name, none.other, none.operation, operation}, line);
}

void compareInOneCollation(std::vector<BoundExpression>& values, const char* operation, int line) {
    if (std::ranges::none_of(values, hasOwnOrder)) return;
    const auto common = commonCollation(values, operation, line);
    for (BoundExpression& value : values) {
        if (!tsql::isText(value.type.type)) continue;
        value.collation = common;
        value.plainColumn = false;
    }
}

// fn_helpcollations(): the collations that COLLATE takes.
BoundQuery Binder::collationRows() {
    constexpr tsql::TypeSpec kName{tsql::SqlType::NVarChar, 128};
    constexpr tsql::TypeSpec kDescription{tsql::SqlType::NVarChar, 1000};
    BoundQuery rows;
    rows.columns.push_back({"name", BoundExpression::expression(numberedColumn(0), kName, false)});
    rows.columns.push_back(
        {"description", BoundExpression::expression(numberedColumn(1), kDescription, false)});
    sql::Compound all;
    for (const CollationName& each : collationNames()) {
        sql::Select row;
        row.items = {numberedItem(sql::text(std::string(each.name)), 0),
                     numberedItem(sql::text(std::string(each.description)), 1)};
        all.terms.push_back({sql::SetOperator::UnionAll, std::move(row)});
    }
    rows.tree = {std::move(all)};
    return rows;
}

}  // namespace kap::engine
