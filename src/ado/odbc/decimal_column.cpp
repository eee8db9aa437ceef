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

// Some drivers give money as people see it ("-$1,234.50"): the last separator is the point when no
// more than two digits stand behind it.
std::string plainMoney(std::string_view text) {
    constexpr std::size_t kDecimals = 2;
    const std::size_t last = text.find_last_of(".,");
    const bool point = last != std::string_view::npos && text.size() - last - 1 <= kDecimals;
    std::string plain = text.find_first_of("-(") != std::string_view::npos ? "-" : "";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] >= '0' && text[i] <= '9') {
            plain += text[i];
        } else if (point && i == last) {
            plain += '.';
        }
    }
    return plain;
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
    const bool currency = column.type == DataTypeEnum::adCurrency;
    auto number = decimalOf(text);
    if (!number && currency) {
        number = decimalOf(plainMoney(text));
    }
    if (!number) {
        refuseValue(column, "'" + std::string(text) +
                                "' has more digits than are kept exactly; round it in the query");
    }
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
