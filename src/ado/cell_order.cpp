#include "ado/cell_order.hpp"

#include <cstdint>

#include "ado/embedded/collation.hpp"

namespace kap::ado {
namespace {

using Cell = ColumnStore::Cell;

bool holdsValue(const ColumnStore& store, std::size_t row) {
    return store.cell(row) == Cell::Value;
}

std::int64_t integerOf(const ColumnStore& store, std::size_t row) {
    return holdsValue(store, row) ? store.integer(row) : 0;
}

double realOf(const ColumnStore& store, std::size_t row) {
    return holdsValue(store, row) ? store.real(row) : 0;
}

std::string_view bytesOf(const ColumnStore& store, std::size_t row) {
    return holdsValue(store, row) ? store.bytes(row) : std::string_view();
}

}  // namespace

std::weak_ordering compareTexts(std::string_view left, std::string_view right) {
    return embedded::compareTexts(left, right);
}

std::weak_ordering compareCells(const ColumnInfo& column, const ColumnStore& store,
                                std::size_t left, std::size_t right) {
    const bool leftNull = store.cell(left) == Cell::Null;
    const bool rightNull = store.cell(right) == Cell::Null;
    if (leftNull || rightNull) {
        return rightNull <=> leftNull;
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
