#include "engine/executor/stored_value.hpp"

#include <algorithm>

#include "data/value_type.hpp"
#include "data/variant_cell.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/fine_dates.hpp"
#include "engine/values/variant.hpp"

namespace kap::engine {

std::int64_t wholeOr(const Value& value, std::int64_t otherwise) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole == nullptr ? otherwise : *whole;
}

bool isTold(const tsql::TypeSpec& type) {
    return tsql::isFineDate(type.type) || tsql::isWideDecimal(type) || tsql::isVariant(type.type);
}

namespace {

// Recordsets keep the digits without zeros at their end.
std::string shortestDecimal(Wide value, int scale) {
    std::string text = scaledText(value, scale);
    if (scale > 0) text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

// The type of a value that a client gives: a decimal of many digits is a text.
tsql::TypeSpec givenType(const ado::RowColumn& given, const Value& value) {
    if (std::holds_alternative<std::string>(value) && ado::isDecimalType(given.type)) {
        return {tsql::SqlType::NVarChar, tsql::kMaxLength};
    }
    return typeOf(given.type, given.numericScale);
}

// A sql_variant as clients get it: decimals in plain text, whatever their digits.
std::string toldVariant(const Value& variant) {
    const TypedValue typed = valueOfVariant(std::get<std::string>(variant));
    ado::ColumnInfo column = typeInfo(typed.type);
    if (!tsql::isDecimal(typed.type.type)) {
        return ado::packVariantCell(column, toldValue(typed.value, typed.type));
    }
    column.wideDecimal = true;
    return ado::packVariantCell(column, scaledText(exactOf(typed.value), typed.type.scale));
}

// The same back, and a value that a client gives with a type of its own.
Value storedVariant(std::string_view cell) {
    const ado::VariantCell own = ado::unpackVariantCell(cell);
    constexpr tsql::TypeSpec kText{tsql::SqlType::NVarChar, tsql::kMaxLength};
    if (own.column.engineType != 0) {
        const tsql::TypeSpec type = unpackType(own.column.engineType);
        const bool told = isTold(type) || tsql::isDecimal(type.type);
        return variantOf(told ? convert(own.value, kText, type, Overlength::Refuse) : own.value,
                         type);
    }
    if (!own.column.wideDecimal) {
        return variantOf(own.value, typeOf(own.column.type, own.column.numericScale));
    }
    // As many digits as it is written with.
    const auto digits = parseScaled(std::get<std::string>(own.value)).value_or(ScaledNumber());
    int count = 1;
    for (Wide rest = digits.value / 10; rest != 0; rest = rest / 10)
        ++count;
    const tsql::TypeSpec type =
        tsql::decimalType(tsql::SqlType::Numeric, std::max(count, digits.scale), digits.scale);
    return variantOf(exactValue(digits.value, type), type);
}

}  // namespace

Value toldValue(const Value& value, const tsql::TypeSpec& type) {
    if (isNull(value) || !isTold(type)) return value;
    if (tsql::isVariant(type.type)) return toldVariant(value);
    if (tsql::isWideDecimal(type)) return shortestDecimal(exactOf(value), type.scale);
    return *fineDateToText(value, type, kDefaultDateStyle);
}

tsql::TypeSpec storedType(const ado::ColumnInfo& column) {
    const tsql::TypeSpec own = unpackType(column.engineType);
    return column.engineType != 0 && isTold(own) ? own : typeOf(column.type, column.numericScale);
}

Value storedCell(const ado::ColumnInfo& column, const ado::ColumnStore& store, std::size_t row) {
    const tsql::TypeSpec type = storedType(column);
    if (!isTold(type)) return ado::valueAt(store, row, ado::storageOf(column.type));
    if (tsql::isVariant(type.type)) {
        const Value cell = ado::valueAt(store, row, ado::Storage::Text);
        return isNull(cell) ? cell : storedVariant(std::get<std::string>(cell));
    }
    constexpr tsql::TypeSpec kText{tsql::SqlType::NVarChar, tsql::kMaxLength};
    return convert(ado::valueAt(store, row, ado::Storage::Text), kText, type, Overlength::Refuse);
}

Value storedValue(const ado::RowColumn& given, const Value& value, const Column& column) {
    if (given.type == ado::DataTypeEnum::adVariant && !isNull(value)) {
        const Value own = storedVariant(std::get<std::string>(value));
        return convert(own, {tsql::SqlType::SqlVariant}, column.type, Overlength::Refuse);
    }
    return convert(value, givenType(given, value), column.type, Overlength::Refuse);
}

}  // namespace kap::engine
