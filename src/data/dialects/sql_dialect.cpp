#include "data/dialects/sql_dialect.hpp"

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "data/dialects/sql_dialects.hpp"

namespace kap::migrate {
namespace {

using enum ado::DataTypeEnum;

bool hasType(ado::Connection& connection, const char* name) {
    const auto types = connection.OpenSchema(ado::SchemaEnum::adSchemaProviderTypes);
    for (; !types->Eof(); types->MoveNext()) {
        const Variant own = types->Fields()->Item(u"TYPE_NAME")->Value();
        if (!own.isNull() && asciiLower(convert::toString(own).utf8()) == name) {
            return true;
        }
    }
    return false;
}

// A constant of a kind that the column cannot have stands for something that the database stores.
bool fits(const CopiedColumn& column, const std::string& constant) {
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

std::string inParentheses(int first, int second) {
    return "(" + plain::text(first) + (second < 0 ? "" : "," + plain::text(second)) + ")";
}

bool isNumeric(ado::DataTypeEnum type) {
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

bool isBinary(ado::DataTypeEnum type) {
    return type == adBinary || type == adVarBinary || type == adLongVarBinary;
}

std::string literalText(const CopiedColumn& column, const std::string& text) {
    constexpr std::size_t kDateLength = 10;
    if (column.type == adDBTimeStamp && text.size() > kDateLength) {
        std::string made = text;
        made[kDateLength] = 'T';
        return made;
    }
    const bool braces = column.type == adGUID && text.starts_with('{') && text.size() > 2;
    return braces ? text.substr(1, text.size() - 2) : text;
}

std::string CopyDialect::selected(const CopiedColumn& column) const {
    return quoted(column.name);
}

std::string CopyDialect::defaultFor(const CopiedColumn& column) const {
    switch (column.defaultValue.kind) {
        case DefaultValue::Kind::Constant:
            return fits(column, column.defaultValue.text)
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

const CopyDialect& CopyDialect::of(ado::Connection& connection) {
    if (connection.Provider() == u"KapLocal") {
        return embeddedCopyDialect();
    }
    return hasType(connection, "int4") ? postgresCopyDialect() : transactCopyDialect();
}

}  // namespace kap::migrate
