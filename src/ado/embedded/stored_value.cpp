#include "ado/embedded/stored_value.hpp"

#include <utility>

#include "ado/embedded/column_info.hpp"
#include "ado/embedded/functions/convert.hpp"

namespace kap::ado::embedded {
namespace {

Value toValue(const ColumnValue& given) {
    if (const auto* integer = std::get_if<std::int64_t>(&given.value)) {
        return *integer;
    }
    if (const auto* real = std::get_if<double>(&given.value)) {
        return *real;
    }
    if (const auto* bytes = std::get_if<std::string>(&given.value)) {
        if (storageOf(given.type) == Storage::Binary) {
            return Blob{*bytes};
        }
        return *bytes;
    }
    return std::monostate{};
}

struct CellMaker {
    CellValue operator()(std::monostate) const { return std::monostate{}; }
    CellValue operator()(std::int64_t value) const { return value; }
    CellValue operator()(double value) const { return value; }
    CellValue operator()(std::string&& value) const { return std::move(value); }
    CellValue operator()(Blob&& value) const { return std::move(value.bytes); }
};

}  // namespace

Value cellValue(const ColumnStore& store, std::size_t row, Storage storage) {
    if (store.cell(row) == ColumnStore::Cell::Null) {
        return std::monostate{};
    }
    switch (storage) {
        case Storage::Integer:
            return store.integer(row);
        case Storage::Real:
            return store.real(row);
        case Storage::Text:
            return std::string(store.bytes(row));
        case Storage::Binary:
            break;
    }
    return Blob{std::string(store.bytes(row))};
}

void appendValue(ColumnStore& store, const Value& value) {
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

CellValue storedValue(const ColumnValue& value, const Column& column) {
    return std::visit(CellMaker{}, convert(toValue(value), typeOf(value.type, value.numericScale),
                                           column.type, Overlength::Refuse));
}

}  // namespace kap::ado::embedded
