#include "engine/catalog/view_rows.hpp"

#include <algorithm>
#include <utility>

#include "engine/catalog/object_names.hpp"

namespace kap::engine::views {

Value shownCollation(const Column& column) {
    if (!tsql::isText(column.type.type)) return {};
    return column.collation == nullptr ? text(kDatabaseCollation) : text(column.collation->name);
}

Value bare(std::string_view storedName) {
    return std::string(bareName(storedName));
}

Value schemaNumber(const SchemaCatalogue& catalogue, std::string_view storedName) {
    return catalogue.schemaId(schemaOf(storedName));
}

Value schemaText(std::string_view storedName) {
    return std::string(schemaOf(storedName));
}

std::int64_t placeOfColumn(const SchemaCatalogue& catalogue, std::string_view table,
                           std::string_view column) {
    const Table* found = catalogue.find(table);
    if (found == nullptr) return 0;
    const auto at = std::ranges::find_if(
        found->columns, [&](const Column& each) { return sameName(each.name, column); });
    return at == found->columns.end() ? 0 : at - found->columns.begin() + 1;
}

std::optional<SystemRows> rowsOf(std::span<const View> list, const SchemaCatalogue& catalogue,
                                 std::string_view owner, std::string_view name) {
    for (const View& view : list) {
        const bool older = owner == "sys" && view.owner.empty();
        if (view.name == name && (view.owner == owner || older)) return view.rows(catalogue);
    }
    return std::nullopt;
}

}  // namespace kap::engine::views
