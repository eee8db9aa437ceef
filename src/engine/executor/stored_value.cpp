#include "engine/executor/stored_value.hpp"

#include "engine/executor/column_info.hpp"
#include "engine/values/convert.hpp"

namespace kap::engine {

std::int64_t wholeOr(const Value& value, std::int64_t otherwise) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole == nullptr ? otherwise : *whole;
}

Value storedValue(const ado::ColumnValue& value, const Column& column) {
    return convert(value.value, typeOf(value.type, value.numericScale), column.type,
                   Overlength::Refuse);
}

}  // namespace kap::engine
