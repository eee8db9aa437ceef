#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/value.hpp"

namespace kap::ado {

// One column of a materialised result, kept apart from the others: eight bytes and a state byte a
// row, and for text and binary the bytes in one arena. Nothing is converted until it is read.
class ColumnStore {
public:
    enum class Cell : std::uint8_t {
        Filled,
        Null,
        // A Null that reads as the type's neutral value. What the database holds, and what an
        // optimistic update must find there, is still Null.
        ReplacedNull,
    };

    [[nodiscard]] std::size_t size() const noexcept { return words_.size(); }
    void reserve(std::size_t rows);
    // Makes room for so many rows and bytes more: to append them, or to set as many bytes, needs no
    // memory then.
    void makeRoom(std::size_t rows, std::size_t bytes);

    void appendNull() { append(0, Cell::Null); }
    void appendInteger(std::int64_t value) {
        append(static_cast<std::uint64_t>(value), Cell::Filled);
    }
    void appendReal(double value) { append(std::bit_cast<std::uint64_t>(value), Cell::Filled); }
    // Text as UTF-8, or binary.
    void appendBytes(std::string_view bytes) { append(store(bytes), Cell::Filled); }
    // The cells of another store; `bytes` says that both hold texts or binary. Whole, or not at all
    // when there is no memory for them.
    void appendAll(const ColumnStore& other, bool bytes);

    [[nodiscard]] Cell cell(std::size_t row) const noexcept { return cells_[row]; }
    [[nodiscard]] std::int64_t integer(std::size_t row) const noexcept {
        return static_cast<std::int64_t>(words_[row]);
    }
    [[nodiscard]] double real(std::size_t row) const noexcept {
        return std::bit_cast<double>(words_[row]);
    }
    [[nodiscard]] std::string_view bytes(std::size_t row) const noexcept;

    void setNull(std::size_t row);
    void setInteger(std::size_t row, std::int64_t value);
    void setReal(std::size_t row, double value);
    void setBytes(std::size_t row, std::string_view bytes);

    // Makes every Null of the column, or that of one row, read as the neutral value.
    void replaceNulls();
    void setReplacedNull(std::size_t row);

    // Forgets the rows from `rows` on.
    void truncate(std::size_t rows);

    // Forgets every row and keeps the room.
    void clear() noexcept;

    // Gives back what growing left over.
    void shrink();
    [[nodiscard]] std::size_t memory() const noexcept;

private:
    void append(std::uint64_t word, Cell cell) {
        words_.push_back(word);
        cells_.push_back(cell);
    }
    [[nodiscard]] std::uint64_t store(std::string_view bytes);

    std::vector<std::uint64_t> words_;
    std::vector<Cell> cells_;
    // Every entry: its length, seven bits a byte with the high bit set on all but the last, then
    // the bytes. `words_` holds where it starts.
    std::vector<char> arena_;
};

// What the database holds in a cell: a replaced Null is Null.
[[nodiscard]] Value valueAt(const ColumnStore& store, std::size_t row, Storage storage);

void append(ColumnStore& store, const Value& value);
void put(ColumnStore& store, std::size_t row, const Value& value);

}  // namespace kap::ado
