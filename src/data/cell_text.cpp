#include "data/cell_text.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "base/hexadecimal.hpp"
#include "data/variant_cell.hpp"

namespace kap::ado {
namespace {

constexpr std::size_t kMoneyDecimals = 4;

// A whole number of the last of so many decimals.
void appendScaled(std::string& text, std::int64_t number, std::size_t decimals) {
    const std::size_t start = text.size();
    text += plain::text(number);
    if (decimals == 0) {
        return;
    }
    const std::size_t first = start + (number < 0 ? 1U : 0U);
    if (text.size() - first <= decimals) {
        text.insert(first, decimals + 1 - (text.size() - first), '0');
    }
    text.insert(text.size() - decimals, 1, '.');
}

void appendInteger(const ColumnInfo& column, std::int64_t value, std::string& text) {
    switch (column.type) {
        case DataTypeEnum::adBoolean:
            text += value != 0 ? '1' : '0';
            break;
        case DataTypeEnum::adCurrency:
            appendScaled(text, value, kMoneyDecimals);
            break;
        case DataTypeEnum::adNumeric:
        case DataTypeEnum::adDecimal:
            appendScaled(text, value, column.numericScale);
            break;
        default:
            text += plain::text(value);
    }
}

void appendReal(const ColumnInfo& column, double value, std::string& text) {
    switch (column.type) {
        case DataTypeEnum::adSingle:
            text += plain::shortest(static_cast<float>(value));
            break;
        case DataTypeEnum::adDBDate:
            text += plain::isoDate(convert::fromLinearDays(value));
            break;
        case DataTypeEnum::adDate:
        case DataTypeEnum::adDBTime:
        case DataTypeEnum::adDBTimeStamp:
            text += plain::isoDateTime(convert::fromLinearDays(value));
            break;
        default:
            text += plain::shortest(value);
    }
}

}  // namespace

bool appendCellText(const ColumnInfo& column, const ColumnStore& store, std::size_t row,
                    std::string& text) {
    if (store.cell(row) != ColumnStore::Cell::Filled) {
        return false;
    }
    if (column.wideDecimal) {
        text += store.bytes(row);
        return true;
    }
    if (column.type == DataTypeEnum::adVariant) {
        text += variantCellText(store.bytes(row));
        return true;
    }
    switch (storageOf(column.type)) {
        case Storage::Integer:
            appendInteger(column, store.integer(row), text);
            break;
        case Storage::Real:
            appendReal(column, store.real(row), text);
            break;
        case Storage::Text:
            text += store.bytes(row);
            break;
        case Storage::Binary:
            text += "0x" + hex::ofBytes(store.bytes(row));
            break;
    }
    return true;
}

}  // namespace kap::ado
