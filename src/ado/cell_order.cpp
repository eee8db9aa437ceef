#include "ado/cell_order.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <variant>

#include <kaputil/automation/convert.hpp>

#include "base/text_order.hpp"
#include "data/cell_value.hpp"
#include "data/variant_cell.hpp"

namespace kap::ado {
namespace {

using Cell = ColumnStore::Cell;

bool holdsValue(const ColumnStore& store, std::size_t row) {
    return store.cell(row) == Cell::Filled;
}

std::int64_t integerOf(const ColumnStore& store, std::size_t row) {
    return holdsValue(store, row) ? store.integer(row) : 0;
}

double realOf(const ColumnStore& store, std::size_t row) {
    return holdsValue(store, row) ? store.real(row) : 0;
}

// A decimal's plain text taken apart: its sign, and its digits in front of and behind the point.
struct PlainDecimal {
    bool negative = false;
    std::string_view whole;
    std::string_view decimals;

    explicit PlainDecimal(std::string_view text) {
        negative = text.starts_with('-');
        text.remove_prefix(negative ? 1 : 0);
        const std::size_t point = std::min(text.find('.'), text.size());
        whole = text.substr(0, point);
        decimals = text.substr(std::min(point + 1, text.size()));
    }
};

std::weak_ordering compareSizes(const PlainDecimal& left, const PlainDecimal& right) {
    if (left.whole.size() != right.whole.size()) {
        return left.whole.size() <=> right.whole.size();
    }
    const auto whole = left.whole <=> right.whole;
    return std::is_neq(whole) ? whole : left.decimals <=> right.decimals;
}

std::string_view bytesOf(const ColumnStore& store, std::size_t row) {
    return holdsValue(store, row) ? store.bytes(row) : std::string_view();
}

}  // namespace

namespace {

// Cells with types of their own: numbers before dates, and these before all else.
std::weak_ordering compareOwnTypes(std::string_view left, std::string_view right) {
    const VariantCell one = unpackVariantCell(left);
    const VariantCell other = unpackVariantCell(right);
    const bool wholes = std::holds_alternative<std::int64_t>(one.value) &&
                        std::holds_alternative<std::int64_t>(other.value) &&
                        one.column.type == other.column.type;
    if (wholes) {
        return std::get<std::int64_t>(one.value) <=> std::get<std::int64_t>(other.value);
    }
    const auto numberOf = [](const VariantCell& cell) -> std::optional<double> {
        const auto* real = std::get_if<double>(&cell.value);
        if (real != nullptr) {
            return *real;
        }
        if (std::holds_alternative<std::int64_t>(cell.value) || cell.column.wideDecimal) {
            ColumnStore store;
            append(store, cell.value);
            return convert::toDouble(toVariant(cell.column, store, 0));
        }
        return std::nullopt;
    };
    const auto first = numberOf(one);
    const auto second = numberOf(other);
    if (first && second) {
        return std::weak_order(*first, *second);
    }
    if (first || second) {
        return second.has_value() <=> first.has_value();
    }
    return compareTexts(variantCellText(left), variantCellText(right));
}

}  // namespace

std::weak_ordering compareDecimals(std::string_view left, std::string_view right) {
    const PlainDecimal one(left.empty() ? "0" : left);
    const PlainDecimal other(right.empty() ? "0" : right);
    if (one.negative != other.negative) {
        return other.negative <=> one.negative;
    }
    return one.negative ? compareSizes(other, one) : compareSizes(one, other);
}

std::weak_ordering compareCells(const ColumnInfo& column, const ColumnStore& store,
                                std::size_t left, std::size_t right) {
    const bool leftNull = store.cell(left) == Cell::Null;
    const bool rightNull = store.cell(right) == Cell::Null;
    if (leftNull || rightNull) {
        return rightNull <=> leftNull;
    }
    if (column.wideDecimal) {
        return compareDecimals(bytesOf(store, left), bytesOf(store, right));
    }
    if (column.type == DataTypeEnum::adVariant) {
        return compareOwnTypes(bytesOf(store, left), bytesOf(store, right));
    }
    switch (storageOf(column.type)) {
        case Storage::Integer:
            return integerOf(store, left) <=> integerOf(store, right);
        case Storage::Real:
            return std::weak_order(realOf(store, left), realOf(store, right));
        case Storage::Text:
            return compareTexts(bytesOf(store, left), bytesOf(store, right));
        case Storage::Binary:
            break;
    }
    return bytesOf(store, left) <=> bytesOf(store, right);
}

}  // namespace kap::ado
