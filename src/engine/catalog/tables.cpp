#include "engine/catalog/tables.hpp"

#include "engine/sqlite/collation.hpp"

#include <algorithm>

#include "base/ascii.hpp"
#include "engine/catalog/counters.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/stored_objects.hpp"
#include "engine/values/text_units.hpp"

namespace kap::engine {

std::string_view collationOf(const Column& column) {
    return column.collation != nullptr ? std::string_view(column.collation->name)
                                       : collationOf(column.type);
}

const Column* Table::find(std::string_view column) const {
    const auto found = std::ranges::find_if(
        columns, [column](const Column& each) { return sameName(each.name, column); });
    return found == columns.end() ? nullptr : &*found;
}

std::string_view Table::shown() const {
    return bareName(name);
}

std::optional<std::string> Catalogue::schemaNamed(std::string_view name) const {
    return sameName(name, kDefaultSchema) ? std::optional(std::string(kDefaultSchema))
                                          : std::nullopt;
}

std::vector<std::vector<std::string>> Catalogue::candidateKeys(const Table& table) const {
    std::vector<std::vector<std::string>> keys(1);
    for (const Column& column : table.columns) {
        if (column.keyOrdinal > 0) keys.front().push_back(column.name);
    }
    return keys;
}

std::string unnamedDefault(const Table& table, std::string_view column) {
    return "DF_" + std::string(table.shown()) + "_" + std::string(column);
}

// Letters beyond A-Z are looked at only where there are any.
bool sameName(std::string_view left, std::string_view right) {
    if (equalsIgnoringCase(left, right)) return true;
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    const bool plain = std::ranges::all_of(left, isAscii) && std::ranges::all_of(right, isAscii);
    return !plain && foldedUnits(left) == foldedUnits(right);
}

bool isKeptByTheFile(std::string_view name) {
    const std::string lower = asciiLower(name);
    return lower == kObjectsTable || lower.starts_with(kCountersTable) ||
           lower.starts_with("sqlite_");
}

}  // namespace kap::engine
