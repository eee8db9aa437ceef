#include "engine/executor/stored_value.hpp"

#include "engine/executor/column_info.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/fine_dates.hpp"

namespace kap::engine {

std::int64_t wholeOr(const Value& value, std::int64_t otherwise) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole == nullptr ? otherwise : *whole;
}

bool isTold(tsql::SqlType type) {
    return tsql::isFineDate(type);
}

Value toldValue(const Value& value, const tsql::TypeSpec& type) {
    if (isNull(value) || !isTold(type.type)) return value;
    return *fineDateToText(value, type, kDefaultDateStyle);
}

tsql::TypeSpec storedType(const ado::ColumnInfo& column) {
    const tsql::TypeSpec own = unpackType(column.engineType);
    return column.engineType != 0 && isTold(own.type) ? own
                                                      : typeOf(column.type, column.numericScale);
}

Value storedCell(const ado::ColumnInfo& column, const ado::ColumnStore& store, std::size_t row) {
    const Value value = ado::valueAt(store, row, ado::storageOf(column.type));
    const tsql::TypeSpec type = storedType(column);
    return isTold(type.type)
               ? convert(value, typeOf(column.type, column.numericScale), type, Overlength::Refuse)
               : value;
}

Value storedValue(const ado::ColumnValue& value, const Column& column) {
    return convert(value.value, typeOf(value.type, value.numericScale), column.type,
                   Overlength::Refuse);
}

}  // namespace kap::engine
