#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/catalog/schema_catalogue.hpp"

// Views and functions WITH SCHEMABINDING, which hold what they name.
namespace kap::engine {

// The name of one that names this object with its schema; with a column, one that also names that.
[[nodiscard]] std::optional<std::string> schemaBoundUser(const SchemaCatalogue& catalogue,
                                                         std::string_view object,
                                                         std::string_view column = {});

// Error 3729 when there is one: `action` is what may not be done, "DROP TABLE", and `shown` the
// object as the statement names it.
void refuseSchemaBound(const SchemaCatalogue& catalogue, const char* action,
                       std::string_view object, const std::string& shown, int line);

// The same for a sequence that defaults draw from.
void refuseUsedSequence(const SchemaCatalogue& catalogue, const char* action,
                        std::string_view sequence, const std::string& shown, int line);

// The same, for whatever has that user.
[[noreturn]] void refuseUsed(const char* action, const std::string& shown, const std::string& user,
                             int line);

}  // namespace kap::engine
