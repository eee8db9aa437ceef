#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/view_rows.hpp"

// The views that tell which columns keys have and what foreign keys refer to.
namespace kap::engine::views {
namespace {

using tsql::SqlType;
using tsql::TypeSpec;

constexpr TypeSpec kRule{SqlType::VarChar, 11};

template <typename Add>
void forForeignKeys(const SchemaCatalogue& catalogue, const Add& add) {
    for (const ConstraintInfo& key : catalogue.constraints()) {
        if (std::string_view(key.type) == "F ") add(key);
    }
}

// One row a column of each foreign key.
SystemRows foreignKeyColumns(const SchemaCatalogue& catalogue, bool modern) {
    SystemRows view;
    view.columns = modern ? std::vector<SystemRows::ColumnType>{{"constraint_object_id", kInt},
                                                                {"constraint_column_id", kInt},
                                                                {"parent_object_id", kInt},
                                                                {"parent_column_id", kInt},
                                                                {"referenced_object_id", kInt},
                                                                {"referenced_column_id", kInt}}
                          : std::vector<SystemRows::ColumnType>{
                                {"constid", kInt},   {"keyno", kSmallInt}, {"fkeyid", kInt},
                                {"fkey", kSmallInt}, {"rkeyid", kInt},     {"rkey", kSmallInt}};
    forForeignKeys(catalogue, [&](const ConstraintInfo& key) {
        const std::size_t count = std::min(key.columns.size(), key.parentColumns.size());
        for (std::size_t i = 0; i < count; ++i) {
            view.rows.push_back(
                {number(objectId(storedName(key))), number(static_cast<std::int64_t>(i) + 1),
                 number(objectId(key.table)),
                 number(placeOfColumn(catalogue, key.table, key.columns[i])),
                 number(objectId(key.parent)),
                 number(placeOfColumn(catalogue, key.parent, key.parentColumns[i]))});
        }
    });
    return view;
}

SystemRows references(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"constid", kInt}, {"fkeyid", kInt}, {"rkeyid", kInt}, {"keycnt", kSmallInt}},
                    {}};
    forForeignKeys(catalogue, [&](const ConstraintInfo& key) {
        view.rows.push_back({number(objectId(storedName(key))), number(objectId(key.table)),
                             number(objectId(key.parent)),
                             number(static_cast<std::int64_t>(key.columns.size()))});
    });
    return view;
}

// The key of the other table that has the columns a foreign key refers to.
std::string referencedKey(const std::vector<ConstraintInfo>& constraints,
                          const ConstraintInfo& foreign) {
    for (const ConstraintInfo& key : constraints) {
        const std::string_view type = key.type;
        const bool unique = type == "PK" || type == "UQ";
        if (unique && sameName(key.table, foreign.parent) &&
            std::ranges::is_permutation(key.columns, foreign.parentColumns, sameName)) {
            return key.name;
        }
    }
    return {};
}

SystemRows referentialConstraints(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"CONSTRAINT_CATALOG", kName},
                     {"CONSTRAINT_SCHEMA", kName},
                     {"CONSTRAINT_NAME", kName},
                     {"UNIQUE_CONSTRAINT_CATALOG", kName},
                     {"UNIQUE_CONSTRAINT_SCHEMA", kName},
                     {"UNIQUE_CONSTRAINT_NAME", kName},
                     {"MATCH_OPTION", kRule},
                     {"UPDATE_RULE", kRule},
                     {"DELETE_RULE", kRule}},
                    {}};
    const std::vector<ConstraintInfo> constraints = catalogue.constraints();
    const std::string& database = catalogue.databaseName();
    forForeignKeys(catalogue, [&](const ConstraintInfo& key) {
        view.rows.push_back({text(database), schemaText(key.table), text(key.name), text(database),
                             schemaText(key.parent), text(referencedKey(constraints, key)),
                             text("SIMPLE"), text(key.onUpdate), text(key.onDelete)});
    });
    return view;
}

SystemRows checkConstraints(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"CONSTRAINT_CATALOG", kName},
                     {"CONSTRAINT_SCHEMA", kName},
                     {"CONSTRAINT_NAME", kName},
                     {"CHECK_CLAUSE", kText}},
                    {}};
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (std::string_view(each.type) != "C ") continue;
        view.rows.push_back({text(catalogue.databaseName()), schemaText(each.table),
                             text(each.name), text(each.source)});
    }
    return view;
}

constexpr auto kKeyViews = std::to_array<View>({
    {"", "sysforeignkeys", [](const SchemaCatalogue& c) { return foreignKeyColumns(c, false); }},
    {"", "sysreferences", references},
    {"sys", "foreign_key_columns",
     [](const SchemaCatalogue& c) { return foreignKeyColumns(c, true); }},
    {"information_schema", "referential_constraints", referentialConstraints},
    {"information_schema", "check_constraints", checkConstraints},
});

}  // namespace

std::span<const View> keyViews() {
    return kKeyViews;
}

}  // namespace kap::engine::views
