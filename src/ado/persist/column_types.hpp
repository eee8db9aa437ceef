#pragma once

#include <string>
#include <string_view>

#include "data/driver.hpp"

// How columns and values are written in a saved recordset.
namespace kap::ado::persist {

// What a data type is called: `type` of the schema's types, and where that is not enough, `dbType`.
struct TypeName {
    std::string_view type;
    std::string_view dbType;
};
[[nodiscard]] TypeName nameOfType(const ColumnInfo& column);

// The data type with such names. `fixed` and `isLong` tell texts and binaries apart. Raises 3003
// for a type that is not known.
[[nodiscard]] DataTypeEnum typeNamed(std::string_view type, std::string_view dbType, bool fixed,
                                     bool isLong);

// A value that is not Null as it stands in a row, not escaped, and back. Reading raises 3003 for a
// text that is no value of the column.
[[nodiscard]] std::string writtenValue(const ColumnInfo& column, const Value& value);
[[nodiscard]] Value readValue(const ColumnInfo& column, const std::string& text);

}  // namespace kap::ado::persist
