// Long texts and binaries in pieces.
#include <algorithm>
#include <utility>

#include <kaputil/ado/field.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/chunks.hpp"
#include "ado/row_cursor.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

std::size_t lengthOf(const Variant& value) {
    return value.isArray() ? value.as<Array>().size() : value.as<String>().size();
}

Variant pieceOf(const Variant& value, std::size_t start, std::size_t length) {
    if (!value.isArray()) {
        return value.as<String>().view().substr(start, length);
    }
    const auto from = value.as<Array>().bytes().begin() + static_cast<std::ptrdiff_t>(start);
    return Array::ofBytes({from, from + static_cast<std::ptrdiff_t>(length)});
}

}  // namespace

Variant joinedChunks(const Variant& held, const Variant& more) {
    if (held.isNull() || held.isEmpty()) {
        return more;
    }
    if (!held.isArray()) {
        return held.as<String>() + convert::toString(more).view();
    }
    std::vector<std::uint8_t> bytes = held.as<Array>().bytes();
    const std::vector<std::uint8_t>& added = more.as<Array>().bytes();
    bytes.insert(bytes.end(), added.begin(), added.end());
    return Array::ofBytes(std::move(bytes));
}

void Field::requireLong() const {
    if (!cursor().columns()[ordinal_].isLong) {
        fail::illegalOperation();
    }
}

void Field::AppendChunk(const Variant& data) {
    requireLong();
    const bool further = appending_ && cursor().isPending(ordinal_);
    setValue(further ? joinedChunks(Value(), convert::plainValue(data)) : data);
    appending_ = true;
}

Variant Field::GetChunk(std::int32_t size) {
    requireLong();
    if (size < 0) {
        fail::invalidArgument();
    }
    const Variant value = Value();
    const std::size_t record = cursor().recordNumber();
    if (chunkRecord_ != record) {
        chunkRecord_ = record;
        chunkStart_ = 0;
    }
    if (value.isNull() || value.isEmpty() || chunkStart_ >= lengthOf(value)) {
        return Variant::null();
    }
    const std::size_t length =
        std::min(static_cast<std::size_t>(size), lengthOf(value) - chunkStart_);
    return pieceOf(value, std::exchange(chunkStart_, chunkStart_ + length), length);
}

}  // namespace kap::ado
