#include "ado/embedded/translate/typed.hpp"

#include "tsql/text.hpp"

namespace kap::ado::embedded {

Typed Typed::literal(const Value& value, tsql::TypeSpec type) {
    Typed result = expression(sqlLiteral(value), type, isNull(value));
    result.constant = value;
    return result;
}

Typed Typed::null() {
    Typed result = expression("NULL", {tsql::SqlType::Int}, true);
    result.nullLiteral = true;
    return result;
}

std::string collated(const Typed& expression) {
    const bool applies = tsql::isText(expression.type.type) && !expression.plainColumn;
    return applies ? expression.sql + " COLLATE KAP_CI" : expression.sql;
}

std::string numberedName(std::size_t index) {
    return "\"c" + tsql::integerText(static_cast<std::int64_t>(index) + 1) + "\"";
}

std::string typeArgument(const tsql::TypeSpec& type) {
    return tsql::integerText(packType(type));
}

}  // namespace kap::ado::embedded
