#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/catalog/schema_catalogue.hpp"
#include "engine/values/value.hpp"

// OBJECT_ID and its kin: what scripts ask before they make or drop something.
namespace kap::engine {

// The number of an object: it follows from the name, so it stays the same when the object is made
// anew.
[[nodiscard]] std::int64_t objectId(std::string_view name);

// "dbo.t", "[t]", "tempdb..#t": the name alone.
[[nodiscard]] std::string plainObjectName(std::string_view text);

// The two-letter type by which the server knows a kind of object: "U ", "V ", "P ".
[[nodiscard]] const char* objectType(StoredKind kind);

// Null for what there is none of.
[[nodiscard]] Value idOfObject(const SchemaCatalogue& catalogue, const std::string& name,
                               const std::string& type);
[[nodiscard]] Value nameOfObject(const SchemaCatalogue& catalogue, std::int64_t id);
[[nodiscard]] Value columnLength(const SchemaCatalogue& catalogue, const std::string& table,
                                 const std::string& column);
[[nodiscard]] Value columnName(const SchemaCatalogue& catalogue, std::int64_t table,
                               std::int64_t ordinal);

}  // namespace kap::engine
