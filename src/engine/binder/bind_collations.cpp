#include <algorithm>
#include <array>

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
    if (result.collation != nullptr) result.plainColumn = false;
    return result;
}

constexpr auto kCollating = std::to_array<ScalarFunction>({
    {"collate", 2, 2, collatedAs},
});

}  // namespace

std::span<const ScalarFunction> collatingFunctions() {
    return kCollating;
}

std::shared_ptr<const TextCollation> commonCollation(const std::vector<BoundExpression>& values,
                                                     const char* operation, int line) {
    std::shared_ptr<const TextCollation> common;
    for (const BoundExpression& value : values) {
        if (value.collation == nullptr) continue;
        if (common != nullptr && common->inSqlite != value.collation->inSqlite) {
            throw ServerError(tsql::Message::CollationConflict,
                              {value.collation->name, common->name, operation}, line);
        }
        common = value.collation;
    }
    return common;
}

void compareInOneCollation(std::vector<BoundExpression>& values, const char* operation, int line) {
    const auto common = commonCollation(values, operation, line);
    if (common == nullptr) return;
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
    for (const CollationName& each : collationNames()) {
        rows.sql += (rows.sql.empty() ? "SELECT " : " UNION ALL SELECT ") + sqlText(each.name) +
                    " AS " + numberedName(0) + ", " + sqlText(each.description) + " AS " +
                    numberedName(1);
    }
    return rows;
}

}  // namespace kap::engine
