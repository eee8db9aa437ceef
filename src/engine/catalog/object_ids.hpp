#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/catalog/schema_catalogue.hpp"
#include "engine/values/value.hpp"

// OBJECT_ID and its kin: what scripts ask before they make or drop something.
namespace kap::engine {

// The number of an object: it follows from the stored name, so it stays the same when the object is
// made anew.
[[nodiscard]] std::int64_t objectId(std::string_view name);

// "dbo.t", "[t]", "tempdb..#t": the stored name that a text means; empty when it is no name, or one
// of another database.
[[nodiscard]] std::string objectNamed(const SchemaCatalogue& catalogue, std::string_view text);

// The two-letter type by which the server knows an object: "U ", "V ", "P ", and of functions "FN",
// "IF" or "TF".
[[nodiscard]] const char* objectType(const SchemaCatalogue& catalogue, const StoredObject& object);

// Null for what there is none of.
[[nodiscard]] Value idOfObject(const SchemaCatalogue& catalogue, const std::string& name,
                               const std::string& type);
// The stored name of what has that number; nothing when there is no such thing.
[[nodiscard]] std::optional<std::string> storedNameOf(const SchemaCatalogue& catalogue,
                                                      std::int64_t id);
[[nodiscard]] Value columnLength(const SchemaCatalogue& catalogue, const std::string& table,
                                 const std::string& column);
[[nodiscard]] Value columnName(const SchemaCatalogue& catalogue, std::int64_t table,
                               std::int64_t ordinal);

}  // namespace kap::engine
