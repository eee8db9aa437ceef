#include "engine/binder/bound_expression.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/values/exact.hpp"

namespace kap::engine {

std::string SumTerm::at(int wantedScale) const {
    if (scale == wantedScale) return sql;
    if (constant) {
        const auto scaled = rescale(*constant, scale, wantedScale, Rounding::HalfAway);
        if (const auto result = scaled ? narrow(*scaled) : std::nullopt) return sqlLiteral(*result);
    }
    return callText("kap_scale", sql, plain::text(wantedScale - scale));
}

BoundExpression BoundExpression::as(const tsql::TypeSpec& other) const {
    BoundExpression result = *this;
    result.type = other;
    result.terms.clear();
    result.joint.clear();
    return result;
}

BoundExpression BoundExpression::literal(const Value& value, tsql::TypeSpec type) {
    BoundExpression result = expression(sqlLiteral(value), type, isNull(value));
    result.constant = value;
    return result;
}

BoundExpression BoundExpression::null() {
    BoundExpression result = expression("NULL", {tsql::SqlType::Int}, true);
    result.nullLiteral = true;
    return result;
}

std::string collated(const BoundExpression& expression, const std::string& text) {
    return expression.plainColumn ? text : text + collationText(expression.type);
}

std::string collated(const BoundExpression& expression) {
    return collated(expression, expression.sql);
}

std::string numberedName(std::size_t index) {
    return "\"c" + plain::text(static_cast<std::int64_t>(index) + 1) + "\"";
}

std::string typeArgument(const tsql::TypeSpec& type) {
    return plain::text(packType(type));
}

}  // namespace kap::engine
