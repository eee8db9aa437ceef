#include "ado/odbc/decimal_column.hpp"

#include <algorithm>
#include <string>

#include "ado/odbc/cell_buffer.hpp"
#include "ado/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

constexpr int kExactDigits = 18;
constexpr int kCurrencyScale = 4;

// The fewest decimals that hold every number of the store.
int scaleNeeded(const ColumnStore& store, int scale) {
    int needed = 0;
    for (std::size_t row = 0; row < store.size() && needed < scale; ++row) {
        if (store.cell(row) == ColumnStore::Cell::Null) {
            continue;
        }
        std::int64_t digits = store.integer(row);
        int own = digits == 0 ? 0 : scale;
        for (; own > needed && digits % 10 == 0; --own) {
            digits /= 10;
        }
        needed = std::max(needed, own);
    }
    return needed;
}

bool fitsScale(const ColumnStore& store, int from, int to) {
    for (std::size_t row = 0; row < store.size(); ++row) {
        if (store.cell(row) != ColumnStore::Cell::Null && to > from &&
            !scaled({store.integer(row), from}, to)) {
            return false;
        }
    }
    return true;
}

void rescale(ColumnStore& store, int from, int to) {
    for (std::size_t row = 0; row < store.size(); ++row) {
        if (store.cell(row) == ColumnStore::Cell::Null) {
            continue;
        }
        std::int64_t digits = store.integer(row);
        for (int scale = from; scale > to; --scale) {
            digits /= 10;
        }
        store.setInteger(row, to > from ? scaled({digits, from}, to).value_or(0) : digits);
    }
}

}  // namespace

bool hasOpenScale(const ColumnInfo& column) {
    return column.type == DataTypeEnum::adNumeric && column.precision > kExactDigits;
}

void appendDecimal(std::string_view text, ColumnInfo& column, ColumnStore& store) {
    const auto number = decimalOf(text);
    if (!number) {
        refuseValue(column, "'" + std::string(text) +
                                "' has more digits than are kept exactly; round it in the query");
    }
    const bool currency = column.type == DataTypeEnum::adCurrency;
    const int scale = currency ? kCurrencyScale : column.numericScale;
    if (const auto digits = scaled(*number, scale)) {
        store.appendInteger(*digits);
        return;
    }
    const int other = std::max(number->scale, scaleNeeded(store, scale));
    const auto digits = scaled(*number, other);
    if (!hasOpenScale(column) || !digits || !fitsScale(store, scale, other)) {
        refuseValue(column, "'" + std::string(text) +
                                "' has more digits than are kept exactly; round it in the query");
    }
    rescale(store, scale, other);
    column.numericScale = static_cast<std::uint8_t>(other);
    store.appendInteger(*digits);
}

}  // namespace kap::ado::odbc
