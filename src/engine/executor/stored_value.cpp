#include "engine/executor/stored_value.hpp"

#include <utility>

#include "engine/executor/column_info.hpp"
#include "engine/values/convert.hpp"

namespace kap::engine {
namespace {

Value toValue(const ado::ColumnValue& given) {
    if (const auto* integer = std::get_if<std::int64_t>(&given.value)) {
        return *integer;
    }
    if (const auto* real = std::get_if<double>(&given.value)) {
        return *real;
    }
    if (const auto* bytes = std::get_if<std::string>(&given.value)) {
        if (ado::storageOf(given.type) == ado::Storage::Binary) {
            return Blob{*bytes};
        }
        return *bytes;
    }
    return std::monostate{};
}

struct CellMaker {
    ado::CellValue operator()(std::monostate) const { return std::monostate{}; }
    ado::CellValue operator()(std::int64_t value) const { return value; }
    ado::CellValue operator()(double value) const { return value; }
    ado::CellValue operator()(std::string&& value) const { return std::move(value); }
    ado::CellValue operator()(Blob&& value) const { return std::move(value.bytes); }
};

}  // namespace

Value cellValue(const ado::ColumnStore& store, std::size_t row, ado::Storage storage) {
    if (store.cell(row) == ado::ColumnStore::Cell::Null) {
        return std::monostate{};
    }
    switch (storage) {
        case ado::Storage::Integer:
            return store.integer(row);
        case ado::Storage::Real:
            return store.real(row);
        case ado::Storage::Text:
            return std::string(store.bytes(row));
        case ado::Storage::Binary:
            break;
    }
    return Blob{std::string(store.bytes(row))};
}

void appendValue(ado::ColumnStore& store, const Value& value) {
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

std::int64_t wholeOr(const Value& value, std::int64_t otherwise) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole == nullptr ? otherwise : *whole;
}

ado::CellValue storedValue(const ado::ColumnValue& value, const Column& column) {
    return std::visit(CellMaker{}, convert(toValue(value), typeOf(value.type, value.numericScale),
                                           column.type, Overlength::Refuse));
}

}  // namespace kap::engine
