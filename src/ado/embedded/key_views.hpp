#pragma once

#include <optional>
#include <string_view>

#include "ado/embedded/schema_catalogue.hpp"

namespace kap::ado::embedded {

// The views that tell which columns keys and indexes have and what foreign keys refer to; names in
// lower case, the owner empty for the older ones. Absent for any other name.
[[nodiscard]] std::optional<SystemRows> keyView(const SchemaCatalogue& catalogue,
                                                std::string_view owner, std::string_view name);

}  // namespace kap::ado::embedded
