#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_order.hpp"

namespace kap::engine {

// The collation of the database.
inline constexpr const char* kDatabaseCollation = "Latin1_General_CI_AS";

// An order of texts that COLLATE asks for, other than the database's own.
struct TextCollation {
    std::string name;  // as the server calls it, and SQLite in the file
    TextMatching matching;
    // What has no order, because columns of two have been put together: the other one, and the
    // operator that did it. Empty for an order.
    std::string other = {};
    std::string operation = {};
};

// The collation of that name (case ignored); empty for the database's own order, which all names
// with CI and AS mean. It lives as long as the process. Errors: 448 for an unknown name, 40517 for
// an order that is not here.
[[nodiscard]] std::shared_ptr<const TextCollation> textCollation(std::string_view name, int line);

// The same; empty also for a name that textCollation() does not take.
[[nodiscard]] std::shared_ptr<const TextCollation> knownCollation(std::string_view name);

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

// The number by which COLLATIONPROPERTY tells a collation's ComparisonStyle; nothing for a name
// that is none.
[[nodiscard]] std::optional<int> comparisonStyle(std::string_view name);

}  // namespace kap::engine
