#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/view_rows.hpp"
#include "tsql/server_error.hpp"

// SQL_VARIANT_PROPERTY: what is known of the type of an expression.
namespace kap::engine {

using tsql::SqlType;

namespace {

constexpr tsql::TypeSpec kAnswer{SqlType::NVarChar, 128};

BoundExpression always(const ScalarCall& call, std::string answer) {
    return BoundExpression::expression(
        sql::when(sql::isNotNull(call.arguments[0].tree), sql::text(std::move(answer))), kAnswer,
        true);
}

BoundExpression propertyOfValue(ScalarCall& call) {
    const BoundExpression& value = call[0];
    const auto* property = std::get_if<std::string>(call[1].constant());
    if (property == nullptr) {
        throw tsql::unsupported("SQL_VARIANT_PROPERTY of a computed name", call.line);
    }
    if (value.nullLiteral || value.type.length == tsql::kMaxLength) {
        return BoundExpression::nullOf(kAnswer);
    }
    const std::string wanted = asciiLower(*property);
    const SqlType type = value.type.type;
    const auto text = [](std::int64_t number) { return plain::text(number); };
    if (wanted == "basetype") return always(call, tsql::typeName(type));
    if (wanted == "precision") return always(call, text(tsql::precisionOf(value.type)));
    if (wanted == "scale") return always(call, text(tsql::scaleOf(value.type)));
    if (wanted == "maxlength") return always(call, text(tsql::bytesOf(value.type)));
    if (wanted == "collation") {
        return tsql::isText(type) ? always(call, "Latin1_General_CI_AS")
                                  : BoundExpression::nullOf(kAnswer);
    }
    if (wanted == "totalbytes") {
        throw tsql::unsupported("SQL_VARIANT_PROPERTY of TotalBytes", call.line);
    }
    return BoundExpression::nullOf(kAnswer);
}

constexpr std::array kVariantFunctions = std::to_array<ScalarFunction>({
    {"sql_variant_property", 2, 2, propertyOfValue},
});

}  // namespace

std::span<const ScalarFunction> variantFunctions() {
    return kVariantFunctions;
}

}  // namespace kap::engine
