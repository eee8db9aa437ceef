#include "engine/catalog/index_properties.hpp"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/view_rows.hpp"

namespace kap::engine {
namespace {

std::optional<IndexInfo> indexOf(const SchemaCatalogue& catalogue, std::int64_t table,
                                 std::int64_t number) {
    for (NumberedIndex& each : numberedIndexes(catalogue)) {
        if (each.number == number && objectId(each.index.table) == table) {
            return std::move(each.index);
        }
    }
    return std::nullopt;
}

bool hasColumn(const std::optional<IndexInfo>& index, std::int64_t column) {
    return index && column >= 1 && column <= static_cast<std::int64_t>(index->columns.size());
}

}  // namespace

std::vector<NumberedIndex> numberedIndexes(const SchemaCatalogue& catalogue) {
    std::vector<NumberedIndex> result;
    std::string table;
    std::int64_t last = 1;
    for (IndexInfo& index : catalogue.keysAndIndexes()) {
        if (index.table != std::exchange(table, index.table)) last = 1;
        const std::int64_t number = index.key == "PK" ? 1 : ++last;
        result.push_back({std::move(index), number});
    }
    return result;
}

Value indexColumn(const SchemaCatalogue& catalogue, const std::string& table, std::int64_t index,
                  std::int64_t column) {
    const auto found = indexOf(catalogue, objectId(objectNamed(catalogue, table)), index);
    if (!hasColumn(found, column)) return {};
    return found->columns[static_cast<std::size_t>(column) - 1];
}

Value indexKeyProperty(const SchemaCatalogue& catalogue, std::int64_t table, std::int64_t index,
                       std::int64_t column, const std::string& property) {
    const auto found = indexOf(catalogue, table, index);
    if (!hasColumn(found, column)) return {};
    const auto place = static_cast<std::size_t>(column) - 1;
    const std::string wanted = asciiLower(property);
    if (wanted == "columnid") {
        return views::placeOfColumn(catalogue, found->table, found->columns[place]);
    }
    if (wanted == "isdescending") return views::flag(found->descending[place]);
    return {};
}

Value indexProperty(const SchemaCatalogue& catalogue, std::int64_t table, const std::string& index,
                    const std::string& property) {
    // What no index of a file has.
    static constexpr std::string_view kNever[] = {
        "indexfillfactor", "isautostatistics",     "isdisabled",
        "isfulltextkey",   "ishypothetical",       "ispadindex",
        "isstatistics",    "ispagelockdisallowed", "isrowlockdisallowed"};
    const std::string wanted = asciiLower(property);
    for (const NumberedIndex& each : numberedIndexes(catalogue)) {
        if (objectId(each.index.table) != table || !sameName(each.index.name, index)) continue;
        if (wanted == "indexid") return each.number;
        if (wanted == "isunique") return views::flag(each.index.unique);
        if (wanted == "isclustered") return views::flag(each.number == 1);
        if (std::ranges::find(kNever, wanted) != std::end(kNever)) return views::flag(false);
        return {};
    }
    return {};
}

}  // namespace kap::engine
