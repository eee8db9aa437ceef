#include "drivers/odbc/decimal_column.hpp"

#include <algorithm>
#include <string>

#include <kaputil/automation/decimal.hpp>

#include "drivers/odbc/cell_buffer.hpp"
#include "drivers/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

constexpr int kCurrencyScale = 4;

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

[[noreturn]] void refuseDigits(const ColumnInfo& column, std::string_view text) {
    refuseValue(column, "'" + std::string(text) +
                            "' has more digits than are kept exactly; round it in the query");
}

// Digits that a Decimal has no room for would be rounded off.
void appendWide(std::string_view text, ColumnInfo& column, ColumnStore& store) {
    const std::string plain = shortestDecimal(text);
    const auto number = Decimal::parse(plain);
    if (!number || number->plainText() != plain) {
        refuseDigits(column, text);
    }
    store.appendBytes(plain);
    column.numericScale = std::max(column.numericScale, static_cast<std::uint8_t>(number->scale()));
}

}  // namespace

void appendDecimal(std::string_view text, ColumnInfo& column, ColumnStore& store) {
    if (column.wideDecimal) {
        appendWide(text, column, store);
        return;
    }
    const bool currency = column.type == DataTypeEnum::adCurrency;
    auto number = decimalOf(text);
    if (!number && currency) {
        number = decimalOf(plainMoney(text));
    }
    const auto digits =
        number ? scaled(*number, currency ? kCurrencyScale : column.numericScale) : std::nullopt;
    if (!digits) {
        refuseDigits(column, text);
    }
    store.appendInteger(*digits);
}

}  // namespace kap::ado::odbc
