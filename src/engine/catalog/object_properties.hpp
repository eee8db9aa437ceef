#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/catalog/schema_catalogue.hpp"
#include "engine/values/value.hpp"

// What OBJECTPROPERTY and its kin tell. Null for an object, a column or a property that is not
// there.
namespace kap::engine {

[[nodiscard]] Value objectProperty(const SchemaCatalogue& catalogue, std::int64_t id,
                                   const std::string& property);

// OBJECTPROPERTYEX, which also knows BaseType; numbers are texts, for its result may be either.
[[nodiscard]] Value objectPropertyEx(const SchemaCatalogue& catalogue, std::int64_t id,
                                     const std::string& property);

// COLUMNPROPERTY of a table's column, or of a parameter of a procedure or function.
[[nodiscard]] Value columnProperty(const SchemaCatalogue& catalogue, std::int64_t object,
                                   const std::string& column, const std::string& property);

// TYPEPROPERTY: "int", "dbo.my_type".
[[nodiscard]] Value typeProperty(const SchemaCatalogue& catalogue, const std::string& type,
                                 const std::string& property);

}  // namespace kap::engine
