#include "ado/cell_order.hpp"

#include <algorithm>
#include <cstdint>

#include "base/text_order.hpp"

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
