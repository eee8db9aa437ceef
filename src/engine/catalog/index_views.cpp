#include <array>

#include "engine/catalog/index_properties.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/view_rows.hpp"

// The views that tell which indexes there are and what they are over.
namespace kap::engine::views {
namespace {

// Calls with every index and its number within its table.
template <typename Add>
void forIndexes(const SchemaCatalogue& catalogue, const Add& add) {
    for (const NumberedIndex& each : numberedIndexes(catalogue)) {
        add(each.index, each.number);
    }
}

SystemRows sysIndexes(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"object_id", kInt},
                     {"name", kName},
                     {"index_id", kInt},
                     {"type", kTinyInt},
                     {"type_desc", kShort},
                     {"is_unique", kBit},
                     {"ignore_dup_key", kBit},
                     {"is_primary_key", kBit},
                     {"is_unique_constraint", kBit},
                     {"fill_factor", kTinyInt},
                     {"is_padded", kBit},
                     {"is_disabled", kBit},
                     {"is_hypothetical", kBit},
                     {"has_filter", kBit},
                     {"filter_definition", kText}},
                    {}};
    forIndexes(catalogue, [&](const IndexInfo& index, std::int64_t id) {
        const bool primary = id == 1;
        view.rows.push_back({number(objectId(index.table)), text(index.name), number(id),
                             number(primary ? 1 : 2), text(primary ? "CLUSTERED" : "NONCLUSTERED"),
                             flag(index.unique), flag(index.ignoresDuplicates), flag(primary),
                             flag(index.key == "UQ"), number(0), flag(false), flag(false),
                             flag(false), flag(!index.filter.empty()),
                             index.filter.empty() ? Value() : text(index.filter)});
    });
    return view;
}

SystemRows olderIndexes(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"id", kInt},
                     {"name", kName},
                     {"indid", kSmallInt},
                     {"status", kInt},
                     {"keycnt", kSmallInt}},
                    {}};
    constexpr std::int64_t kIgnoresDuplicates = 1;
    constexpr std::int64_t kUnique = 2;
    constexpr std::int64_t kPrimary = 2048;
    constexpr std::int64_t kUniqueKey = 4096;
    forIndexes(catalogue, [&](const IndexInfo& index, std::int64_t id) {
        const std::int64_t status = (index.ignoresDuplicates ? kIgnoresDuplicates : 0) +
                                    (index.unique ? kUnique : 0) + (id == 1 ? kPrimary : 0) +
                                    (index.key == "UQ" ? kUniqueKey : 0);
        view.rows.push_back({number(objectId(index.table)), text(index.name), number(id),
                             number(status),
                             number(static_cast<std::int64_t>(index.columns.size()))});
    });
    return view;
}

// One row a column of each index.
SystemRows indexColumns(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"object_id", kInt},
                     {"index_id", kInt},
                     {"index_column_id", kInt},
                     {"column_id", kInt},
                     {"key_ordinal", kTinyInt},
                     {"partition_ordinal", kTinyInt},
                     {"is_descending_key", kBit},
                     {"is_included_column", kBit}},
                    {}};
    forIndexes(catalogue, [&](const IndexInfo& index, std::int64_t id) {
        for (std::size_t i = 0; i < index.columns.size(); ++i) {
            const auto place = static_cast<std::int64_t>(i) + 1;
            view.rows.push_back({number(objectId(index.table)), number(id), number(place),
                                 number(placeOfColumn(catalogue, index.table, index.columns[i])),
                                 number(place), number(0), flag(index.descending[i]), flag(false)});
        }
        auto place = static_cast<std::int64_t>(index.columns.size());
        for (const std::string& column : index.included) {
            view.rows.push_back({number(objectId(index.table)), number(id), number(++place),
                                 number(placeOfColumn(catalogue, index.table, column)), number(0),
                                 number(0), flag(false), flag(true)});
        }
    });
    return view;
}

SystemRows olderIndexKeys(const SchemaCatalogue& catalogue) {
    SystemRows view{
        {{"id", kInt}, {"indid", kSmallInt}, {"colid", kSmallInt}, {"keyno", kSmallInt}}, {}};
    forIndexes(catalogue, [&](const IndexInfo& index, std::int64_t id) {
        for (std::size_t i = 0; i < index.columns.size(); ++i) {
            view.rows.push_back({number(objectId(index.table)), number(id),
                                 number(placeOfColumn(catalogue, index.table, index.columns[i])),
                                 number(static_cast<std::int64_t>(i) + 1)});
        }
    });
    return view;
}

constexpr auto kIndexViews = std::to_array<View>({
    {"", "sysindexes", olderIndexes},
    {"", "sysindexkeys", olderIndexKeys},
    {"sys", "indexes", sysIndexes},
    {"sys", "index_columns", indexColumns},
});

}  // namespace

std::span<const View> indexViews() {
    return kIndexViews;
}

}  // namespace kap::engine::views
