#include "data/column_store.hpp"

#include <algorithm>
#include <bit>

namespace kap::ado {
namespace {

// Of the length in front of an entry's bytes.
constexpr std::size_t kMostLengthBytes = 10;

// Twice as much each time, as appending itself would.
template <class Values>
void growBy(Values& values, std::size_t count) {
    if (values.capacity() - values.size() < count) {
        values.reserve(std::max(2 * values.capacity(), values.size() + count));
    }
}

// Moving a small column costs more than its room is worth.
template <typename T>
void giveBack(std::vector<T>& values) {
    constexpr std::size_t kSmall = 4096;
    if ((values.capacity() - values.size()) * sizeof(T) > kSmall) values.shrink_to_fit();
}

}  // namespace

void ColumnStore::makeRoom(std::size_t rows, std::size_t bytes) {
    growBy(words_, rows);
    growBy(cells_, rows);
    if (bytes > 0) {
        growBy(arena_, bytes + kMostLengthBytes);
    }
}

void ColumnStore::reserve(std::size_t rows) {
    words_.reserve(rows);
    cells_.reserve(rows);
}

std::string_view ColumnStore::bytes(std::size_t row) const noexcept {
    const char* at = arena_.data() + words_[row];
    std::size_t length = 0;
    for (unsigned shift = 0;; shift += 7) {
        const auto part = static_cast<unsigned char>(*at++);
        length |= static_cast<std::size_t>(part & 0x7FU) << shift;
        if (part < 0x80) {
            return {at, length};
        }
    }
}

void ColumnStore::setNull(std::size_t row) {
    cells_[row] = Cell::Null;
}

void ColumnStore::setInteger(std::size_t row, std::int64_t value) {
    words_[row] = static_cast<std::uint64_t>(value);
    cells_[row] = Cell::Filled;
}

void ColumnStore::setReal(std::size_t row, double value) {
    words_[row] = std::bit_cast<std::uint64_t>(value);
    cells_[row] = Cell::Filled;
}

void ColumnStore::setBytes(std::size_t row, std::string_view bytes) {
    words_[row] = store(bytes);
    cells_[row] = Cell::Filled;
}

void ColumnStore::replaceNulls() {
    for (Cell& cell : cells_) {
        if (cell == Cell::Null) {
            cell = Cell::ReplacedNull;
        }
    }
}

void ColumnStore::setReplacedNull(std::size_t row) {
    cells_[row] = Cell::ReplacedNull;
}

void ColumnStore::truncate(std::size_t rows) {
    if (rows < size()) {
        words_.resize(rows);
        cells_.resize(rows);
    }
}

void ColumnStore::clear() noexcept {
    words_.clear();
    cells_.clear();
    arena_.clear();
}

void ColumnStore::shrink() {
    giveBack(words_);
    giveBack(cells_);
    giveBack(arena_);
}

std::size_t ColumnStore::memory() const noexcept {
    return words_.capacity() * sizeof(words_[0]) + cells_.capacity() * sizeof(cells_[0]) +
           arena_.capacity();
}

std::uint64_t ColumnStore::store(std::string_view bytes) {
    const std::uint64_t start = arena_.size();
    std::size_t length = bytes.size();
    growBy(arena_, length + kMostLengthBytes);  // in one step, whatever the entry's parts
    while (length >= 0x80) {
        arena_.push_back(static_cast<char>((length & 0x7FU) | 0x80U));
        length >>= 7;
    }
    arena_.push_back(static_cast<char>(length));
    arena_.insert(arena_.end(), bytes.begin(), bytes.end());
    return start;
}

void ColumnStore::appendAll(const ColumnStore& other, bool bytes) {
    makeRoom(other.size(), 0);
    const std::size_t start = arena_.size();
    arena_.insert(arena_.end(), other.arena_.begin(), other.arena_.end());
    for (std::size_t row = 0; row < other.size(); ++row) {
        const bool moves = bytes && other.cells_[row] == Cell::Filled;
        append(other.words_[row] + (moves ? start : 0), other.cells_[row]);
    }
}

Value valueAt(const ColumnStore& store, std::size_t row, Storage storage) {
    if (store.cell(row) != ColumnStore::Cell::Filled) {
        return std::monostate{};
    }
    switch (storage) {
        case Storage::Integer:
            return store.integer(row);
        case Storage::Real:
            return store.real(row);
        case Storage::Text:
        case Storage::Binary:
            break;
    }
    return bytesValue(storage, store.bytes(row));
}

void append(ColumnStore& store, const Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        store.appendInteger(*integer);
    } else if (const auto* real = std::get_if<double>(&value)) {
        store.appendReal(*real);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        store.appendBytes(*text);
    } else if (const auto* blob = std::get_if<Blob>(&value)) {
        store.appendBytes(blob->bytes);
    } else {
        store.appendNull();
    }
}

void put(ColumnStore& store, std::size_t row, const Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        store.setInteger(row, *integer);
    } else if (const auto* real = std::get_if<double>(&value)) {
        store.setReal(row, *real);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        store.setBytes(row, *text);
    } else if (const auto* blob = std::get_if<Blob>(&value)) {
        store.setBytes(row, blob->bytes);
    } else {
        store.setNull(row);
    }
}

}  // namespace kap::ado
