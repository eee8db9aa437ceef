#include "migrate/row_texts.hpp"

#include <cstdint>
#include <limits>
#include <string_view>

#include <kaputil/automation/plain_text.hpp>

#include "ado/row_cursor.hpp"
#include "migrate/cell_text.hpp"

namespace kap::migrate {
namespace {

using ado::DataTypeEnum;
using Cell = ado::ColumnStore::Cell;

constexpr int kCurrencyDecimals = 4;

void appendDigits(std::string& text, std::uint64_t number, std::size_t least) {
    char digits[std::numeric_limits<std::uint64_t>::digits10 + 1];
    char* const end = digits + sizeof digits;
    char* begin = end;
    for (std::uint64_t left = number; left > 0 || begin == end; left /= 10) {
        *--begin = static_cast<char>('0' + left % 10);
    }
    const auto count = static_cast<std::size_t>(end - begin);
    text.append(least > count ? least - count : 0, '0');
    text.append(begin, count);
}

// A whole number of the last of so many decimals.
void appendScaled(std::string& text, std::int64_t value, int decimals) {
    std::uint64_t unit = 1;
    for (int i = 0; i < decimals; ++i) {
        unit *= 10;
    }
    const auto bits = static_cast<std::uint64_t>(value);
    const std::uint64_t size = value < 0 ? 0 - bits : bits;
    if (value < 0) {
        text += '-';
    }
    appendDigits(text, size / unit, 1);
    if (decimals > 0) {
        text += '.';
        appendDigits(text, size % unit, static_cast<std::size_t>(decimals));
    }
}

}  // namespace

RowTexts::RowTexts(ado::Recordset& rows) : rows_(rows) {
    const auto fields = rows.Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        columns_.push_back(columnOf(fields->Item(i)));
        const auto& info = rows.rows().columns()[static_cast<std::size_t>(i)];
        if (info.wideDecimal) {
            columns_.back().way = Way::ByField;
        }
    }
}

RowTexts::Column RowTexts::columnOf(const Ref<ado::Field>& field) {
    Column column;
    column.field = field;
    column.free = false;
    switch (field->Type()) {
        case DataTypeEnum::adBoolean:
        case DataTypeEnum::adUnsignedTinyInt:
        case DataTypeEnum::adSmallInt:
        case DataTypeEnum::adInteger:
        case DataTypeEnum::adBigInt:
            column.way = Way::Whole;
            break;
        case DataTypeEnum::adCurrency:
            column.way = Way::Scaled;
            column.scale = kCurrencyDecimals;
            break;
        case DataTypeEnum::adNumeric:
            column.scale = field->NumericScale();
            if (column.scale <= std::numeric_limits<std::int64_t>::digits10) {
                column.way = Way::Scaled;
            }
            break;
        case DataTypeEnum::adDouble:
            column.way = Way::Real;
            break;
        case DataTypeEnum::adChar:
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adLongVarChar:
        case DataTypeEnum::adWChar:
        case DataTypeEnum::adVarWChar:
        case DataTypeEnum::adLongVarWChar:
            column.way = Way::Bytes;
            column.free = true;
            break;
        default:
            column.free = true;
            break;
    }
    return column;
}

bool RowTexts::append(std::string& text, std::size_t column) const {
    const Column& from = columns_[column];
    const ado::RowCursor& cursor = rows_.rows();
    const ado::ColumnStore& store = rows_.rows().table().store(column);
    const bool plain = cursor.editMode() == ado::EditModeEnum::adEditNone;
    const std::size_t row = plain ? cursor.currentRow() : 0;
    if (!plain || from.way == Way::ByField || store.cell(row) == Cell::ReplacedNull) {
        const auto shown = cellText(*from.field);
        text += shown.value_or("");
        return shown.has_value();
    }
    if (store.cell(row) == Cell::Null) {
        return false;
    }
    switch (from.way) {
        case Way::Bytes:
            text += store.bytes(row);
            break;
        case Way::Whole:
            appendScaled(text, store.integer(row), 0);
            break;
        case Way::Scaled:
            appendScaled(text, store.integer(row), from.scale);
            break;
        case Way::Real:
            text += kap::plain::shortest(store.real(row));
            break;
        case Way::ByField:
            break;
    }
    return true;
}

bool RowTexts::waitsForNext() const {
    return rows_.rows().fetchesNext();
}

}  // namespace kap::migrate
