#include "data/cell_value.hpp"

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/convert/calendar.hpp"
#include "data/failures.hpp"
#include "data/value_type.hpp"
#include "data/variant_cell.hpp"

namespace kap::ado {
namespace {

Variant integerVariant(const ColumnInfo& column, std::int64_t value) {
    switch (column.type) {
        case DataTypeEnum::adBoolean:
            return value != 0;
        case DataTypeEnum::adUnsignedTinyInt:
            return static_cast<std::uint8_t>(value);
        case DataTypeEnum::adTinyInt:
        case DataTypeEnum::adSmallInt:
            return static_cast<std::int16_t>(value);
        case DataTypeEnum::adUnsignedSmallInt:
        case DataTypeEnum::adInteger:
        case DataTypeEnum::adError:
            return static_cast<std::int32_t>(value);
        case DataTypeEnum::adUnsignedInt:
            if (value <= std::numeric_limits<std::int32_t>::max()) {
                return static_cast<std::int32_t>(value);
            }
            return Decimal(value);
        case DataTypeEnum::adCurrency:
            return Currency{value};
        case DataTypeEnum::adNumeric:
        case DataTypeEnum::adDecimal:
            return Decimal(value, column.numericScale);
        default:  // wider than any whole-number type of automation
            return Decimal(value);
    }
}

Variant realVariant(const ColumnInfo& column, double value) {
    switch (column.type) {
        case DataTypeEnum::adSingle:
            return static_cast<float>(value);
        case DataTypeEnum::adDate:
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adDBTime:
        case DataTypeEnum::adDBTimeStamp:
            return convert::fromLinearDays(value);
        default:
            return value;
    }
}

Variant textVariant(const ColumnInfo& column, std::string_view value) {
    if (column.type == DataTypeEnum::adGUID) {
        return String(u"{") + String(value) + u"}";
    }
    return String(value);
}

Variant binaryVariant(std::string_view value) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(value.data());
    return Array::ofBytes({bytes, bytes + value.size()});
}

// The value of a cell that has a type of its own.
Variant ownVariant(std::string_view text) {
    const VariantCell cell = unpackVariantCell(text);
    return toVariant(cell.column, cell.value);
}

Variant bytesVariant(const ColumnInfo& column, std::string_view value) {
    if (column.type == DataTypeEnum::adVariant) {
        return ownVariant(value);
    }
    return storageOf(column.type) == Storage::Binary ? binaryVariant(value)
                                                     : textVariant(column, value);
}

Variant wideVariant(const ColumnInfo& column, std::string_view text) {
    const auto decimal = Decimal::parse(text);
    if (!decimal) {
        fail::doesNotFit(column.name);
    }
    return *decimal;
}

Variant neutralVariant(const ColumnInfo& column) {
    switch (storageOf(column.type)) {
        case Storage::Integer:
            return integerVariant(column, 0);
        case Storage::Real:
            return realVariant(column, 0);
        case Storage::Text:
        case Storage::Binary:
            break;
    }
    return bytesVariant(column, {});
}

std::int64_t bigInteger(const Variant& value) {
    const auto whole = convert::toDecimal(value).scaledTo(0);
    if (!whole) {
        throw AutomationError(kap::errors::kOverflow);
    }
    return *whole;
}

std::int64_t decimalDigits(const ColumnInfo& column, const Variant& value) {
    const auto scaled = convert::toDecimal(value).scaledTo(column.numericScale);
    std::int64_t limit = 1;
    for (int i = 0; i < column.precision && limit <= std::numeric_limits<std::int64_t>::max() / 10;
         ++i) {
        limit *= 10;
    }
    const bool limited = column.precision <= 18;
    if (!scaled || (limited && (*scaled >= limit || *scaled <= -limit))) {
        throw AutomationError(kap::errors::kOverflow);
    }
    return *scaled;
}

std::int64_t toInteger(const ColumnInfo& column, const Variant& value) {
    switch (column.type) {
        case DataTypeEnum::adBoolean:
            return convert::toBoolean(value) ? 1 : 0;
        case DataTypeEnum::adUnsignedTinyInt:
            return convert::toByte(value);
        case DataTypeEnum::adSmallInt:
            return convert::toInteger(value);
        case DataTypeEnum::adInteger:
            return convert::toLong(value);
        case DataTypeEnum::adCurrency:
            return convert::toCurrency(value).scaled;
        case DataTypeEnum::adNumeric:
        case DataTypeEnum::adDecimal:
            return decimalDigits(column, value);
        default:
            return bigInteger(value);
    }
}

double toReal(const ColumnInfo& column, const Variant& value) {
    switch (column.type) {
        case DataTypeEnum::adSingle:
            return static_cast<double>(convert::toSingle(value));
        case DataTypeEnum::adDate:
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adDBTime:
        case DataTypeEnum::adDBTimeStamp:
            return convert::linearDays(convert::toDate(value));
        default:
            return convert::toDouble(value);
    }
}

std::string toText(const ColumnInfo& column, const Variant& value) {
    String text = convert::toString(value);
    if (column.type == DataTypeEnum::adGUID && text.view().starts_with(u'{') &&
        text.view().ends_with(u'}')) {
        text = text.view().substr(1, text.size() - 2);
    }
    if (!column.isLong && column.type != DataTypeEnum::adGUID &&
        text.size() > static_cast<std::size_t>(column.definedSize)) {
        fail::doesNotFit(column.name);
    }
    return text.utf8();
}

Blob toBinary(const ColumnInfo& column, const Variant& value) {
    const std::vector<std::uint8_t>& bytes = value.as<Array>().bytes();
    if (!column.isLong && bytes.size() > static_cast<std::size_t>(column.definedSize)) {
        fail::doesNotFit(column.name);
    }
    return {{bytes.begin(), bytes.end()}};
}

// A value that keeps its type; a text of a text stays one.
std::string ownCell(const Variant& value) {
    ColumnInfo own;
    own.type = dataTypeOf(value);
    own.definedSize = std::numeric_limits<std::int32_t>::max();
    if (!isDecimalType(own.type)) {
        return packVariantCell(own, toCell(own, value));
    }
    const Decimal decimal = convert::toDecimal(value);
    own.wideDecimal = true;
    own.numericScale = static_cast<std::uint8_t>(decimal.scale());
    return packVariantCell(own, decimal.plainText());
}

Value convertCell(const ColumnInfo& column, const Variant& value) {
    if (column.type == DataTypeEnum::adVariant) {
        return ownCell(value);
    }
    if (column.wideDecimal) {
        return convert::toDecimal(value).plainText();
    }
    switch (storageOf(column.type)) {
        case Storage::Integer:
            return toInteger(column, value);
        case Storage::Real:
            return toReal(column, value);
        case Storage::Text:
            return toText(column, value);
        case Storage::Binary:
            break;
    }
    return toBinary(column, value);
}

}  // namespace

Variant toVariant(const ColumnInfo& column, const ColumnStore& store, std::size_t row) {
    switch (store.cell(row)) {
        case ColumnStore::Cell::Null:
            return Variant::null();
        case ColumnStore::Cell::ReplacedNull:
            return neutralVariant(column);
        case ColumnStore::Cell::Filled:
            break;
    }
    if (column.wideDecimal) {
        return wideVariant(column, store.bytes(row));
    }
    switch (storageOf(column.type)) {
        case Storage::Integer:
            return integerVariant(column, store.integer(row));
        case Storage::Real:
            return realVariant(column, store.real(row));
        case Storage::Text:
        case Storage::Binary:
            break;
    }
    return bytesVariant(column, store.bytes(row));
}

Variant toVariant(const ColumnInfo& column, const Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        return integerVariant(column, *integer);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return realVariant(column, *real);
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return column.wideDecimal ? wideVariant(column, *text) : bytesVariant(column, *text);
    }
    if (const auto* blob = std::get_if<Blob>(&value)) {
        return binaryVariant(blob->bytes);
    }
    return Variant::null();
}

Value toCell(const ColumnInfo& column, const Variant& given) {
    const Variant value = convert::plainValue(given);
    if (value.isNull() || value.isEmpty()) {
        return std::monostate{};
    }
    try {
        return convertCell(column, value);
    } catch (const AutomationError& error) {
        if (error.number() == kap::errors::kTypeMismatch ||
            error.number() == kap::errors::kObjectNotSet) {
            fail::wrongType(column.name);
        }
        if (error.number() == kap::errors::kOverflow) {
            fail::doesNotFit(column.name);
        }
        throw;
    }
}

Value databaseValue(const ColumnInfo& column, const ColumnStore& store, std::size_t row) {
    return valueAt(store, row, column.wideDecimal ? Storage::Text : storageOf(column.type));
}

}  // namespace kap::ado
