#include "data/variant_cell.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "data/cell_text.hpp"
#include "data/column_store.hpp"

namespace kap::ado {
namespace {

// In front of the numbers that tell the type, each with a semicolon behind it.
constexpr char kVariantMark = '\x01';
constexpr std::size_t kNumbers = 4;

struct VariantContent {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(std::int64_t value) const { return plain::text(value); }
    std::string operator()(double value) const { return plain::shortest(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const Blob& value) const { return hex::ofBytes(value.bytes); }
};

VariantCell textCell(std::string_view text) {
    VariantCell cell;
    cell.column.type = DataTypeEnum::adVarWChar;
    cell.column.definedSize = std::numeric_limits<std::int32_t>::max();
    cell.value = std::string(text);
    return cell;
}

std::optional<Value> readContent(const ColumnInfo& column, std::string_view text) {
    if (column.wideDecimal) return std::string(text);
    switch (storageOf(column.type)) {
        case Storage::Integer: {
            const auto whole = plain::readWhole(text);
            return whole ? std::optional<Value>(*whole) : std::nullopt;
        }
        case Storage::Real: {
            const auto real = plain::readReal(text);
            return real ? std::optional<Value>(real->value) : std::nullopt;
        }
        case Storage::Binary: {
            auto bytes = hex::toBytes(text);
            return bytes ? std::optional<Value>(Blob{std::move(*bytes)}) : std::nullopt;
        }
        case Storage::Text:
            break;
    }
    return std::string(text);
}

}  // namespace

std::string packVariantCell(const ColumnInfo& column, const Value& value) {
    std::string cell(1, kVariantMark);
    for (const std::int64_t number :
         {static_cast<std::int64_t>(column.type), std::int64_t{column.numericScale},
          std::int64_t{column.wideDecimal}, column.engineType}) {
        cell += plain::text(number);
        cell += ';';
    }
    return cell + std::visit(VariantContent(), value);
}

VariantCell unpackVariantCell(std::string_view cell) {
    if (!cell.starts_with(kVariantMark)) return textCell(cell);
    std::string_view rest = cell.substr(1);
    std::array<std::int64_t, kNumbers> numbers{};
    for (std::int64_t& number : numbers) {
        const std::size_t end = rest.find(';');
        const auto read = plain::readWhole(rest.substr(0, end));
        if (end == std::string_view::npos || !read) return textCell(cell);
        number = *read;
        rest.remove_prefix(end + 1);
    }
    VariantCell result;
    result.column.type = static_cast<DataTypeEnum>(numbers[0]);
    result.column.numericScale = static_cast<std::uint8_t>(numbers[1]);
    result.column.wideDecimal = numbers[2] != 0;
    result.column.engineType = numbers[3];
    result.column.definedSize = std::numeric_limits<std::int32_t>::max();
    auto value = readContent(result.column, rest);
    if (!value) return textCell(cell);
    result.value = std::move(*value);
    return result;
}

std::string variantCellText(std::string_view cell) {
    const VariantCell unpacked = unpackVariantCell(cell);
    ColumnStore store;
    append(store, unpacked.value);
    std::string text;
    appendCellText(unpacked.column, store, 0, text);
    return text;
}

}  // namespace kap::ado
