#include "data/dialects/sql_dialect.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "data/dialects/sql_dialects.hpp"

namespace kap::ado {
namespace dialects {

namespace {

using enum DataTypeEnum;

}  // namespace

std::string inParentheses(int first, int second) {
    return "(" + plain::text(first) + (second < 0 ? "" : "," + plain::text(second)) + ")";
}

bool isNumeric(DataTypeEnum type) {
    switch (type) {
        case adSmallInt:
        case adInteger:
        case adBigInt:
        case adUnsignedTinyInt:
        case adSingle:
        case adDouble:
        case adCurrency:
        case adNumeric:
        case adDecimal:
            return true;
        default:
            return false;
    }
}

bool isBinary(DataTypeEnum type) {
    return type == adBinary || type == adVarBinary || type == adLongVarBinary;
}

std::string literalText(const ColumnDefinition& column, const std::string& text) {
    constexpr std::size_t kDateLength = 10;
    if (column.type == adDBTimeStamp && text.size() > kDateLength) {
        std::string made = text;
        made[kDateLength] = 'T';
        return made;
    }
    const bool braces = column.type == adGUID && text.starts_with('{') && text.size() > 2;
    return braces ? text.substr(1, text.size() - 2) : text;
}

namespace {

// A constant of a kind that the column cannot have stands for something that the database stores.
bool fits(const ColumnDefinition& column, const std::string& constant) {
    const bool number =
        !constant.empty() && constant.find_first_not_of("+-.0123456789") == std::string::npos;
    if (isNumeric(column.type) || column.type == adBoolean) {
        return number;
    }
    if (column.type == adDBTimeStamp || column.type == adDBDate || column.type == adDBTime) {
        return !number || constant.find('.') == std::string::npos;
    }
    return !isBinary(column.type);
}

}  // namespace
}  // namespace dialects

std::string SqlDialect::qualified(const ObjectName& object) const {
    return (object.schema.empty() ? std::string() : quoted(object.schema) + ".") +
           quoted(object.name);
}

ObjectName SqlDialect::nameFor(const ObjectName& object) const {
    return ObjectName(nameFor(std::string_view(object.name)),
                      nameFor(std::string_view(object.schema)));
}

std::string SqlDialect::switchingOffConstraint(const ObjectName& /*table*/,
                                               std::string_view /*name*/) const {
    return {};
}

std::string SqlDialect::switchingOffTrigger(const ObjectName& /*table*/,
                                            std::string_view /*name*/) const {
    return {};
}

std::string SqlDialect::addingDefault(const ObjectName& /*table*/,
                                      const ColumnDefinition& /*column*/) const {
    return {};
}

std::string SqlDialect::selected(const ColumnDefinition& column) const {
    return quoted(column.name);
}

std::string SqlDialect::defaultFor(const ColumnDefinition& column) const {
    switch (column.defaultValue.kind) {
        case DefaultValue::Kind::Constant:
            return dialects::fits(column, column.defaultValue.text)
                       ? literal(column, column.defaultValue.text)
                       : std::string();
        case DefaultValue::Kind::Now:
            return now();
        case DefaultValue::Kind::Identifier:
            return newIdentifier();
        case DefaultValue::Kind::None:
        case DefaultValue::Kind::Other:
            break;
    }
    return {};
}

}  // namespace kap::ado
