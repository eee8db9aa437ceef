#include "migrate/cell_text.hpp"

#include <cstdint>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"

namespace kap::migrate {
namespace {

using ado::DataTypeEnum;

std::string decimalText(const Decimal& value, const ado::Field& field) {
    const std::uint8_t scale = field.NumericScale();
    const bool scaled = field.Type() == DataTypeEnum::adNumeric && scale <= Decimal::kMaxScale;
    return withDecimals(value.plainText(), scaled ? scale : 0);
}

}  // namespace

std::string withDecimals(std::string text, std::size_t decimals) {
    if (decimals == 0) {
        return text;
    }
    std::size_t point = text.find('.');
    if (point == std::string::npos) {
        point = text.size();
        text.push_back('.');
    }
    const std::size_t present = text.size() - point - 1;
    return text + std::string(decimals > present ? decimals - present : 0, '0');
}

std::string typeNameOf(const ado::Field& field) {
    switch (field.Type()) {
        case DataTypeEnum::adInteger:
            return "int";
        case DataTypeEnum::adSmallInt:
            return "smallint";
        case DataTypeEnum::adUnsignedTinyInt:
            return "tinyint";
        case DataTypeEnum::adBigInt:
            return "bigint";
        case DataTypeEnum::adBoolean:
            return "bit";
        case DataTypeEnum::adSingle:
            return "real";
        case DataTypeEnum::adDouble:
            return "float";
        case DataTypeEnum::adCurrency:
            return "money";
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return "decimal";
        case DataTypeEnum::adDBDate:
            return "date";
        case DataTypeEnum::adDBTimeStamp:
            return "datetime";
        case DataTypeEnum::adChar:
            return "char";
        case DataTypeEnum::adVarChar:
            return "varchar";
        case DataTypeEnum::adWChar:
            return "nchar";
        case DataTypeEnum::adVarWChar:
            return "nvarchar";
        case DataTypeEnum::adLongVarChar:
            return "text";
        case DataTypeEnum::adLongVarWChar:
            return "ntext";
        case DataTypeEnum::adBinary: {
            const auto rowVersion =
                static_cast<std::int32_t>(ado::FieldAttributeEnum::adFldRowVersion);
            return (field.Attributes() & rowVersion) != 0 ? "timestamp" : "binary";
        }
        case DataTypeEnum::adVarBinary:
            return "varbinary";
        case DataTypeEnum::adLongVarBinary:
            return "image";
        case DataTypeEnum::adGUID:
            return "uniqueidentifier";
        case DataTypeEnum::adVariant:
            return "sql_variant";
        default:
            return "type " + plain::text(static_cast<std::int32_t>(field.Type()));
    }
}

bool isNumber(const ado::Field& field) {
    switch (field.Type()) {
        case DataTypeEnum::adInteger:
        case DataTypeEnum::adSmallInt:
        case DataTypeEnum::adUnsignedTinyInt:
        case DataTypeEnum::adBigInt:
        case DataTypeEnum::adBoolean:
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return true;
        default:
            return false;
    }
}

std::optional<std::string> cellText(const ado::Field& field) {
    constexpr int kCurrencyScale = 4;
    const Variant value = field.Value();
    switch (value.type()) {
        case VarType::Null:
            return std::nullopt;
        case VarType::Boolean:
            return value.as<bool>() ? "1" : "0";
        case VarType::Single:
            return plain::shortest(value.as<float>());
        case VarType::Double:
            return plain::shortest(value.as<double>());
        case VarType::Currency:
            return withDecimals(Decimal(value.as<Currency>().scaled, kCurrencyScale).plainText(),
                                kCurrencyScale);
        case VarType::Decimal:
            return decimalText(value.as<Decimal>(), field);
        case VarType::Date:
            return field.Type() == DataTypeEnum::adDBDate ? plain::isoDate(value.as<Date>())
                                                          : plain::isoDateTime(value.as<Date>());
        case VarType::Array:
            return "0x" + hex::ofBytes(value.as<Array>().bytes());
        case VarType::String:
            return value.as<String>().utf8();
        default:
            return plain::text(convert::toLong(value));  // Byte, Integer, Long
    }
}

}  // namespace kap::migrate
