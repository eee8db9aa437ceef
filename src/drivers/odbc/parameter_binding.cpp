#include "drivers/odbc/parameter_binding.hpp"

#include <algorithm>
#include <cstring>

#include <kaputil/data/error_numbers.hpp>

#include "data/variant_cell.hpp"
#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

using enum DataTypeEnum;

constexpr SQLULEN kWidestParameter = 18;
constexpr SQLULEN kMoneyDigits = 19;
constexpr int kMoneyScale = 4;
constexpr SQLULEN kStampCharacters = 20;  // up to the point of the seconds' decimals
constexpr int kStampDecimals = 3;
constexpr SQLULEN kLongestWide = 4000;
constexpr SQLULEN kLongestBytes = 8000;
constexpr SQLULEN kDefaultRoom = 8000;

SQLSMALLINT wholeType(DataTypeEnum type) {
    switch (type) {
        case adUnsignedTinyInt:
            return SQL_TINYINT;
        case adTinyInt:
        case adSmallInt:
            return SQL_SMALLINT;
        case adUnsignedSmallInt:
        case adInteger:
            return SQL_INTEGER;
        default:
            return SQL_BIGINT;
    }
}

SQLSMALLINT directionOf(ParameterDirectionEnum direction) {
    switch (direction) {
        case ParameterDirectionEnum::adParamOutput:
        case ParameterDirectionEnum::adParamReturnValue:
            return SQL_PARAM_OUTPUT;
        case ParameterDirectionEnum::adParamInputOutput:
            return SQL_PARAM_INPUT_OUTPUT;
        default:
            return SQL_PARAM_INPUT;
    }
}

bool isDecimal(DataTypeEnum type) {
    return type == adNumeric || type == adDecimal || type == adCurrency;
}

}  // namespace

void ParameterBinding::putWhole(Bound& bound, DataTypeEnum type, std::uint8_t scale,
                                std::int64_t value) {
    if (type == adBoolean) {
        bound.bit = value != 0 ? 1 : 0;
        bound.form = SQL_C_BIT;
        bound.type = SQL_BIT;
        bound.value = &bound.bit;
        return;
    }
    if (isDecimal(type)) {
        const int decimals = type == adCurrency ? kMoneyScale : scale;
        bound.bytes = decimalText(value, decimals);
        bound.form = SQL_C_CHAR;
        bound.type = SQL_DECIMAL;
        bound.size = type == adCurrency ? kMoneyDigits : kWidestParameter;
        bound.decimals = static_cast<SQLSMALLINT>(decimals);
        bound.value = bound.bytes.data();
        bound.length = static_cast<SQLLEN>(bound.bytes.size());
        return;
    }
    bound.whole = value;
    bound.form = SQL_C_SBIGINT;
    bound.type = wholeType(type);
    bound.value = &bound.whole;
}

void ParameterBinding::putReal(Bound& bound, DataTypeEnum type, std::uint8_t scale, double value) {
    switch (type) {
        case adDBDate:
            bound.date = dateOf(value);
            bound.form = SQL_C_TYPE_DATE;
            bound.type = SQL_TYPE_DATE;
            bound.size = 10;
            bound.value = &bound.date;
            return;
        case adDBTime:
            bound.bytes = clockText(value);
            bound.form = SQL_C_CHAR;
            bound.type = SQL_VARCHAR;
            bound.size = bound.bytes.size();
            bound.value = bound.bytes.data();
            bound.length = static_cast<SQLLEN>(bound.bytes.size());
            return;
        case adDate:
        case adDBTimeStamp: {
            const int decimals = scale > 9 ? kStampDecimals : scale;
            bound.stamp = stampOf(value, decimals);
            bound.form = SQL_C_TYPE_TIMESTAMP;
            bound.type = SQL_TYPE_TIMESTAMP;
            bound.size = kStampCharacters + static_cast<SQLULEN>(decimals);
            bound.decimals = static_cast<SQLSMALLINT>(decimals);
            bound.value = &bound.stamp;
            return;
        }
        default:
            bound.real = value;
            bound.form = SQL_C_DOUBLE;
            bound.type = type == adSingle ? SQL_REAL : SQL_DOUBLE;
            bound.value = &bound.real;
    }
}

void ParameterBinding::putText(Bound& bound, DataTypeEnum type, const std::string& value) {
    bound.wideText = String(value).units();
    const SQLULEN units = bound.wideText.size();
    bound.form = SQL_C_WCHAR;
    bound.type = units > kLongestWide ? SQL_WLONGVARCHAR : SQL_WVARCHAR;
    if (type == adChar || type == adWChar) {
        bound.type = SQL_WCHAR;
    }
    if (type == adGUID) {
        bound.type = SQL_GUID;
    }
    bound.size = std::max<SQLULEN>(units, 1);
    bound.value = bound.wideText.data();
    bound.length = static_cast<SQLLEN>(units * sizeof(char16_t));
}

// A decimal as its plain text.
void ParameterBinding::putDigits(Bound& bound, const std::string& value) {
    const std::size_t point = std::min(value.find('.'), value.size());
    const std::size_t decimals = value.size() - std::min(point + 1, value.size());
    bound.bytes = value;
    bound.form = SQL_C_CHAR;
    bound.type = SQL_DECIMAL;
    bound.size = point + decimals;
    bound.decimals = static_cast<SQLSMALLINT>(decimals);
    bound.value = bound.bytes.data();
    bound.length = static_cast<SQLLEN>(bound.bytes.size());
}

void ParameterBinding::putBinary(Bound& bound, const std::string& value) {
    bound.bytes = value;
    bound.form = SQL_C_BINARY;
    // Never as SQL_BINARY: some drivers would announce another length than a row version has.
    bound.type = value.size() > kLongestBytes ? SQL_LONGVARBINARY : SQL_VARBINARY;
    bound.size = std::max<SQLULEN>(value.size(), 1);
    bound.value = bound.bytes.data();
    bound.length = static_cast<SQLLEN>(value.size());
}

// A Null has a type all the same.
void ParameterBinding::putNull(Bound& bound, DataTypeEnum type, std::uint8_t scale) {
    switch (storageOf(type)) {
        case Storage::Integer:
            putWhole(bound, type, scale > kWidestParameter ? std::uint8_t{0} : scale, 0);
            break;
        case Storage::Real:
            putReal(bound, type, scale, 0);
            break;
        case Storage::Text:
            putText(bound, type, {});
            break;
        case Storage::Binary:
            putBinary(bound, {});
            break;
    }
    bound.length = SQL_NULL_DATA;
}

void ParameterBinding::put(Bound& bound, DataTypeEnum type, std::uint8_t scale,
                           const Value& value) {
    if (const auto* cell = std::get_if<std::string>(&value);
        cell != nullptr && type == DataTypeEnum::adVariant) {
        const VariantCell own = unpackVariantCell(*cell);
        put(bound, own.column.type, own.column.numericScale, own.value);
        return;
    }
    if (const auto* whole = std::get_if<std::int64_t>(&value)) {
        putWhole(bound, type, scale, *whole);
    } else if (const auto* real = std::get_if<double>(&value)) {
        putReal(bound, type, scale, *real);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        if (isDecimal(type)) {
            putDigits(bound, *text);
        } else {
            putText(bound, type, *text);
        }
    } else if (const auto* blob = std::get_if<Blob>(&value)) {
        putBinary(bound, blob->bytes);
    } else {
        putNull(bound, type, scale);
    }
}

void ParameterBinding::add(DataTypeEnum type, std::uint8_t numericScale, const Value& value) {
    Bound& bound = bound_.emplace_back();
    put(bound, type, numericScale, value);
    bind(bound, {});
}

void ParameterBinding::add(const RequestParameter& parameter) {
    Bound& bound = bound_.emplace_back();
    put(bound, parameter.type, parameter.numericScale, parameter.value);
    bound.direction = directionOf(parameter.direction);
    if (bound.direction != SQL_PARAM_INPUT) {
        makeRoom(bound, parameter);
    }
    bind(bound, connection_.dialect().namesParameters() ? parameter.name : std::string());
}

// What comes back may be longer than what went in.
void ParameterBinding::makeRoom(Bound& bound, const RequestParameter& parameter) const {
    const SQLULEN size = parameter.size > 0 ? static_cast<SQLULEN>(parameter.size) : kDefaultRoom;
    if (bound.form == SQL_C_WCHAR) {
        bound.wideText.resize(std::max<std::size_t>(bound.wideText.size(), size) + 1);
        bound.size = std::max<SQLULEN>(bound.size, std::min(size, kLongestWide));
        bound.value = bound.wideText.data();
        bound.room = static_cast<SQLLEN>(bound.wideText.size() * sizeof(char16_t));
    } else if (bound.form == SQL_C_BINARY || bound.form == SQL_C_CHAR) {
        constexpr std::size_t kDigitsRoom = 64;
        const std::size_t room = bound.form == SQL_C_CHAR ? kDigitsRoom : size;
        bound.bytes.resize(std::max(bound.bytes.size(), room) + 1);
        bound.size = bound.form == SQL_C_CHAR ? bound.size : std::max<SQLULEN>(bound.size, size);
        bound.value = bound.bytes.data();
        bound.room = static_cast<SQLLEN>(bound.bytes.size());
    }
}

void ParameterBinding::bind(Bound& bound, const std::string& name) {
    const auto number = static_cast<SQLUSMALLINT>(bound_.size());
    connection_.check(
        SQLBindParameter(statement_.get(), number, bound.direction, bound.form, bound.type,
                         bound.size, bound.decimals, bound.value, bound.room, &bound.length),
        statement_);
    if (name.empty()) {
        return;
    }
    SQLHDESC description = kNoHandle;
    connection_.check(
        SQLGetStmtAttrW(statement_.get(), SQL_ATTR_IMP_PARAM_DESC, &description, 0, nullptr),
        statement_);
    std::u16string units(String(name).view());
    SQLSetDescFieldW(description, static_cast<SQLSMALLINT>(number), SQL_DESC_NAME, units.data(),
                     static_cast<SQLINTEGER>(units.size() * sizeof(char16_t)));
}

Value ParameterBinding::result(std::size_t place, const RequestParameter& parameter) const {
    const Bound& bound = bound_[place];
    if (bound.length == SQL_NULL_DATA) {
        return std::monostate{};
    }
    const auto length = static_cast<std::size_t>(std::max<SQLLEN>(bound.length, 0));
    switch (bound.form) {
        case SQL_C_BIT:
            return std::int64_t{bound.bit != 0 ? 1 : 0};
        case SQL_C_SBIGINT:
            return std::int64_t{bound.whole};
        case SQL_C_DOUBLE:
            return bound.real;
        case SQL_C_TYPE_TIMESTAMP:
            return daysOf(bound.stamp).value_or(0);
        case SQL_C_TYPE_DATE:
            return daysOf(bound.date).value_or(0);
        case SQL_C_BINARY:
            return Blob{bound.bytes.substr(0, length)};
        case SQL_C_CHAR: {
            const std::string text = bound.bytes.substr(0, length);
            if (parameter.type == adDBTime) {
                return daysOfClock(text).value_or(0);
            }
            const auto number = decimalOf(text);
            const int scale = parameter.type == adCurrency ? kMoneyScale : parameter.numericScale;
            const auto digits = number ? scaled(*number, scale) : std::nullopt;
            if (!digits) {
                throw driverError(errors::kMultipleStep, "22003",
                                  "The value '" + text +
                                      "' that came back does not fit into its "
                                      "parameter.");
            }
            return *digits;
        }
        default: {
            std::string text;
            if (!appendUtf8(text, bound.wideText.data(),
                            std::min(length / sizeof(char16_t), bound.wideText.size()))) {
                throw driverError(errors::kMultipleStep, "22003",
                                  "A text that came back holds half of a surrogate pair.");
            }
            return text;
        }
    }
}

}  // namespace kap::ado::odbc
