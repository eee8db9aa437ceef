#include "engine/binder/bound_expression.hpp"

#include <kaputil/automation/plain_text.hpp>

namespace kap::engine {

namespace {

std::string nameAt(std::size_t index) {
    return "c" + plain::text(static_cast<std::int64_t>(index) + 1);
}

}  // namespace

BoundExpression BoundExpression::as(const tsql::TypeSpec& other) const {
    BoundExpression result = *this;
    result.type = other;
    result.chain = {};
    return result;
}

BoundExpression BoundExpression::readBy(sql::Expression reader) const {
    BoundExpression result = *this;
    result.tree = std::move(reader);
    result.isLiteral = false;
    result.chain = {};
    return result;
}

BoundExpression BoundExpression::literal(const Value& value, const tsql::TypeSpec& type) {
    BoundExpression result = expression(sql::Constant{value}, type, isNull(value));
    result.isLiteral = true;
    return result;
}

BoundExpression BoundExpression::nullOf(const tsql::TypeSpec& type) {
    return expression(sql::null(), type, true);
}

BoundExpression BoundExpression::null() {
    BoundExpression result = nullOf({tsql::SqlType::Int});
    result.nullLiteral = true;
    return result;
}

sql::Expression inOrderOf(const BoundExpression& expression, sql::Expression tree) {
    if (expression.collation == nullptr) return sql::collated(std::move(tree), expression.type);
    return sql::Collated{std::move(tree), expression.collation->name};
}

sql::Expression collated(const BoundExpression& expression, sql::Expression tree) {
    return expression.plainColumn ? std::move(tree) : inOrderOf(expression, std::move(tree));
}

sql::Expression collated(const BoundExpression& expression) {
    return collated(expression, expression.tree);
}

sql::Item numberedItem(sql::Expression value, std::size_t index) {
    return {std::move(value), nameAt(index)};
}

std::vector<std::string> numberedNames(std::size_t count) {
    std::vector<std::string> names;
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        names.push_back(nameAt(i));
    return names;
}

sql::Expression numberedColumn(std::size_t index) {
    return sql::column(nameAt(index));
}

sql::Expression numberedColumn(const std::string& source, std::size_t index) {
    return sql::column(source, nameAt(index));
}

sql::Expression rowCount(sql::QueryTree query) {
    return sql::Subquery{
        sql::one(sql::call(fn::kCount, sql::Star()), sql::from(sql::Derived{std::move(query)}))};
}

}  // namespace kap::engine
