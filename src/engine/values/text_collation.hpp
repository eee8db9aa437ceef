#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_order.hpp"

namespace kap::engine {

// An order of texts that COLLATE asks for, other than the database's own.
struct TextCollation {
    std::string name;       // as the server calls it
    TextMatching matching;  // what counts in it
    const char* inSqlite;   // what the connection calls it
};

// The collation of that name (case ignored); empty for the database's own order, which all names
// with CI and AS mean. Errors: 448 for an unknown name, 40517 for an order that is not here.
[[nodiscard]] std::shared_ptr<const TextCollation> textCollation(std::string_view name, int line);

// A text as units of which equal ones match.
[[nodiscard]] std::u16string matchingUnits(std::string_view text, TextMatching matching);

// The matching as a number, for the SQL functions that are told it, and back.
[[nodiscard]] int packMatching(TextMatching matching);
[[nodiscard]] TextMatching unpackMatching(std::int64_t packed);

// The names that can stand behind COLLATE, each with what it means.
struct CollationName {
    std::string_view name;
    std::string_view description;
};
[[nodiscard]] const std::vector<CollationName>& collationNames();

}  // namespace kap::engine
