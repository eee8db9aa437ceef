#include "engine/executor/stored_value.hpp"

#include "data/value_type.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/fine_dates.hpp"

namespace kap::engine {

std::int64_t wholeOr(const Value& value, std::int64_t otherwise) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole == nullptr ? otherwise : *whole;
}

bool isTold(const tsql::TypeSpec& type) {
    return tsql::isFineDate(type.type) || tsql::isWideDecimal(type);
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
tsql::TypeSpec givenType(const ado::ColumnValue& value) {
    if (std::holds_alternative<std::string>(value.value) && ado::isDecimalType(value.type)) {
        return {tsql::SqlType::NVarChar, tsql::kMaxLength};
    }
    return typeOf(value.type, value.numericScale);
}

}  // namespace

Value toldValue(const Value& value, const tsql::TypeSpec& type) {
    if (isNull(value) || !isTold(type)) return value;
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
    constexpr tsql::TypeSpec kText{tsql::SqlType::NVarChar, tsql::kMaxLength};
    return convert(ado::valueAt(store, row, ado::Storage::Text), kText, type, Overlength::Refuse);
}

Value storedValue(const ado::ColumnValue& value, const Column& column) {
    return convert(value.value, givenType(value), column.type, Overlength::Refuse);
}

}  // namespace kap::engine
