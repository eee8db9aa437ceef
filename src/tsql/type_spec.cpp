#include "tsql/type_spec.hpp"

#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"

namespace kap::tsql {

namespace {

constexpr std::array kNames = std::to_array<const char*>(
    {"bit",     "tinyint",   "smallint", "int",           "bigint",
     "decimal", "numeric",   "money",    "smallmoney",    "float",
     "real",    "date",      "datetime", "smalldatetime", "char",
     "varchar", "nchar",     "nvarchar", "text",          "ntext",
     "binary",  "varbinary", "image",    "timestamp",     "uniqueidentifier"});

static_assert(kNames.size() == static_cast<std::size_t>(SqlType::UniqueIdentifier) + 1);

bool between(SqlType type, SqlType first, SqlType last) {
    return type >= first && type <= last;
}

}  // namespace

const char* typeName(SqlType type) {
    return kNames.at(static_cast<std::size_t>(type));
}

std::string typeText(const TypeSpec& spec) {
    std::string name = typeName(spec.type);
    switch (spec.type) {
        case SqlType::Decimal:
        case SqlType::Numeric:
            return name + "(" + plain::text(spec.precision) + "," + plain::text(spec.scale) + ")";
        case SqlType::Char:
        case SqlType::VarChar:
        case SqlType::NChar:
        case SqlType::NVarChar:
        case SqlType::Binary:
        case SqlType::VarBinary:
            return name + "(" + (spec.length == kMaxLength ? "max" : plain::text(spec.length)) +
                   ")";
        default:
            return name;
    }
}

bool isInteger(SqlType type) {
    return between(type, SqlType::Bit, SqlType::BigInt);
}
bool isExact(SqlType type) {
    return between(type, SqlType::Bit, SqlType::SmallMoney);
}
bool isDecimal(SqlType type) {
    return type == SqlType::Decimal || type == SqlType::Numeric;
}
bool isMoney(SqlType type) {
    return type == SqlType::Money || type == SqlType::SmallMoney;
}
bool isApproximate(SqlType type) {
    return type == SqlType::Float || type == SqlType::Real;
}
bool isNumber(SqlType type) {
    return between(type, SqlType::Bit, SqlType::Real);
}
bool isDate(SqlType type) {
    return between(type, SqlType::Date, SqlType::SmallDateTime);
}
bool isText(SqlType type) {
    return between(type, SqlType::Char, SqlType::NText);
}
bool isNational(SqlType type) {
    return type == SqlType::NChar || type == SqlType::NVarChar || type == SqlType::NText;
}
bool isBinary(SqlType type) {
    return between(type, SqlType::Binary, SqlType::Timestamp);
}

bool isLarge(SqlType type) {
    return type == SqlType::Text || type == SqlType::NText || type == SqlType::Image;
}

}  // namespace kap::tsql
