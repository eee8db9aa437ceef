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

CellValue storedValue(const ColumnValue& value, const Column& column) {
    return std::visit(CellMaker{}, convert(toValue(value), typeOf(value.type, value.numericScale),
                                           column.type, Overlength::Refuse));
}

}  // namespace kap::ado::embedded
