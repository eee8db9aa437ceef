#include "ado/parameter_cell.hpp"

#include <algorithm>
#include <limits>
#include <utility>

#include <kaputil/automation/convert.hpp>

#include "data/cell_value.hpp"
#include "data/value_type.hpp"

namespace kap::ado {
namespace {

constexpr std::int32_t kUnlimited = std::numeric_limits<std::int32_t>::max();

// A decimal without precision takes both from its value.
void adaptToValue(ColumnInfo& column, const Variant& value) {
    if (!isDecimalType(column.type) || column.precision != 0) {
        return;
    }
    column.precision = kWidestDecimal;
    column.numericScale = 0;
    if (!value.isNull() && !value.isEmpty()) {
        column.numericScale = static_cast<std::uint8_t>(convert::toDecimal(value).scale());
    }
}

ColumnInfo columnOf(const Parameter& parameter, const Variant& value) {
    ColumnInfo column;
    column.name = parameter.Name().utf8();
    column.type = parameter.Type();
    column.definedSize = parameter.Size() <= 0 ? kUnlimited : parameter.Size();
    column.isLong = isLongType(column.type);
    column.precision = parameter.Precision();
    column.numericScale = parameter.NumericScale();
    adaptToValue(column, value);
    return column;
}

RequestParameter requestOf(const ColumnInfo& column, const Variant& value) {
    RequestParameter made;
    made.type = column.type;
    made.precision = isDecimalType(column.type) ? column.precision : std::uint8_t{0};
    made.numericScale = isDecimalType(column.type) ? column.numericScale : std::uint8_t{0};
    made.value = toCell(column, value);
    return made;
}

// What a value may be, as the type of its own.
ColumnInfo columnOfValue(const Variant& value) {
    ColumnInfo column;
    column.type = dataTypeOf(value);
    column.definedSize = kUnlimited;
    column.precision = 0;
    adaptToValue(column, value);
    return column;
}

}  // namespace

Variant convertedParameter(const Parameter& parameter, const Variant& value) {
    Variant plain = convert::plainValue(value);
    if (plain.isNull() || plain.isEmpty() || plain.isMissing()) {
        return plain;
    }
    if (parameter.Type() == DataTypeEnum::adVariant) {
        return plain;
    }
    const ColumnInfo column = columnOf(parameter, plain);
    return toVariant(column, toCell(column, plain));
}

RequestParameter toRequest(const Parameter& parameter, bool named) {
    const Variant value = parameter.Value();
    const bool untyped = parameter.Type() == DataTypeEnum::adVariant;
    RequestParameter made =
        requestOf(untyped ? columnOfValue(value) : columnOf(parameter, value), value);
    made.size = std::max(parameter.Size(), 0);
    made.direction = parameter.Direction();
    if (named && !parameter.Name().empty()) {
        const std::string name = parameter.Name().utf8();
        made.name = name.starts_with('@') ? name : "@" + name;
    }
    return made;
}

RequestParameter toRequest(const Variant& value) {
    const Variant plain = convert::plainValue(value);
    return requestOf(columnOfValue(plain), plain);
}

Variant fromRequest(const RequestParameter& parameter) {
    ColumnInfo column;
    column.type = parameter.type;
    column.numericScale = parameter.numericScale;
    return toVariant(column, parameter.value);
}

}  // namespace kap::ado
