#include <array>
#include <utility>

#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/catalog/view_rows.hpp"

// The views of one kind of constraint each, and of the columns that fill themselves.
namespace kap::engine::views {
namespace {

constexpr tsql::TypeSpec kTypeLetters{tsql::SqlType::Char, 2};
constexpr tsql::TypeSpec kWhole{tsql::SqlType::BigInt};

// What sys.objects says of every constraint; further columns follow.
std::vector<SystemRows::ColumnType> constraintColumns() {
    return {{"name", kName},        {"object_id", kInt},   {"schema_id", kInt},
            {"type", kTypeLetters}, {"type_desc", kShort}, {"parent_object_id", kInt},
            {"is_ms_shipped", kBit}};
}

std::vector<Value> constraintRow(const SchemaCatalogue& catalogue, const ConstraintInfo& each,
                                 const char* description) {
    return {text(each.name),
            number(objectId(storedName(each))),
            schemaNumber(catalogue, each.table),
            text(each.type),
            text(description),
            number(objectId(each.table)),
            flag(false)};
}

template <typename Add>
SystemRows constraintRows(const SchemaCatalogue& catalogue, std::string_view type,
                          const char* description, std::vector<SystemRows::ColumnType> more,
                          const Add& add) {
    SystemRows view{constraintColumns(), {}};
    view.columns.insert(view.columns.end(), std::make_move_iterator(more.begin()),
                        std::make_move_iterator(more.end()));
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (std::string_view(each.type) != type) continue;
        std::vector<Value> row = constraintRow(catalogue, each, description);
        add(each, row);
        view.rows.push_back(std::move(row));
    }
    return view;
}

SystemRows keyConstraints(const SchemaCatalogue& catalogue) {
    const auto add = [](const ConstraintInfo&, std::vector<Value>& row) {
        row.push_back(flag(false));
    };
    SystemRows view =
        constraintRows(catalogue, "PK", "PRIMARY_KEY_CONSTRAINT", {{"is_system_named", kBit}}, add);
    SystemRows unique =
        constraintRows(catalogue, "UQ", "UNIQUE_CONSTRAINT", {{"is_system_named", kBit}}, add);
    for (std::vector<Value>& row : unique.rows)
        view.rows.push_back(std::move(row));
    return view;
}

// A check of one column belongs to it.
SystemRows sysCheckConstraints(const SchemaCatalogue& catalogue) {
    return constraintRows(catalogue, "C ", "CHECK_CONSTRAINT",
                          {{"is_disabled", kBit},
                           {"is_not_trusted", kBit},
                           {"parent_column_id", kInt},
                           {"definition", kText}},
                          [](const ConstraintInfo& each, std::vector<Value>& row) {
                              row.insert(row.end(), {flag(!each.enabled), flag(!each.enabled),
                                                     number(0), text(each.source)});
                          });
}

SystemRows defaultConstraints(const SchemaCatalogue& catalogue) {
    return constraintRows(
        catalogue, "D ", "DEFAULT_CONSTRAINT",
        {{"parent_column_id", kInt}, {"definition", kText}, {"is_system_named", kBit}},
        [&](const ConstraintInfo& each, std::vector<Value>& row) {
            const std::string column = each.columns.empty() ? "" : each.columns.front();
            row.insert(row.end(), {number(placeOfColumn(catalogue, each.table, column)),
                                   text(shownDefinition(each.source)), flag(false)});
        });
}

// What the server calls the actions, by number and by name.
std::pair<std::int64_t, std::string> actionOf(const std::string& words) {
    if (words == "CASCADE") return {1, "CASCADE"};
    if (words == "SET NULL") return {2, "SET_NULL"};
    if (words == "SET DEFAULT") return {3, "SET_DEFAULT"};
    return {0, "NO_ACTION"};
}

SystemRows foreignKeys(const SchemaCatalogue& catalogue) {
    return constraintRows(
        catalogue, "F ", "FOREIGN_KEY_CONSTRAINT",
        {{"referenced_object_id", kInt},
         {"is_disabled", kBit},
         {"is_not_trusted", kBit},
         {"delete_referential_action", kTinyInt},
         {"delete_referential_action_desc", kShort},
         {"update_referential_action", kTinyInt},
         {"update_referential_action_desc", kShort}},
        [](const ConstraintInfo& key, std::vector<Value>& row) {
            const auto [onDelete, deleteName] = actionOf(key.onDelete);
            const auto [onUpdate, updateName] = actionOf(key.onUpdate);
            row.insert(row.end(),
                       {number(objectId(key.parent)), flag(!key.enabled), flag(!key.enabled),
                        number(onDelete), text(deleteName), number(onUpdate), text(updateName)});
        });
}

template <typename Add>
void forColumns(const SchemaCatalogue& catalogue, const Add& add) {
    for (const Table* table : catalogue.tables()) {
        std::int64_t ordinal = 0;
        for (const Column& column : table->columns)
            add(*table, column, ++ordinal);
    }
}

SystemRows identityColumns(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"object_id", kInt},
                     {"name", kName},
                     {"column_id", kInt},
                     {"seed_value", kWhole},
                     {"increment_value", kWhole}},
                    {}};
    forColumns(catalogue, [&](const Table& table, const Column& column, std::int64_t ordinal) {
        if (!column.identity) return;
        view.rows.push_back({number(objectId(table.name)), text(column.name), number(ordinal),
                             number(column.identity->seed), number(column.identity->increment)});
    });
    return view;
}

SystemRows computedColumns(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"object_id", kInt},
                     {"name", kName},
                     {"column_id", kInt},
                     {"definition", kText},
                     {"is_persisted", kBit}},
                    {}};
    forColumns(catalogue, [&](const Table& table, const Column& column, std::int64_t ordinal) {
        if (!column.computed) return;
        view.rows.push_back({number(objectId(table.name)), text(column.name), number(ordinal),
                             text(shownDefinition(shownSource(column))), flag(false)});
    });
    return view;
}

constexpr auto kConstraintViews = std::to_array<View>({
    {"sys", "key_constraints", keyConstraints},
    {"sys", "check_constraints", sysCheckConstraints},
    {"sys", "default_constraints", defaultConstraints},
    {"sys", "foreign_keys", foreignKeys},
    {"sys", "identity_columns", identityColumns},
    {"sys", "computed_columns", computedColumns},
});

}  // namespace

std::span<const View> constraintViews() {
    return kConstraintViews;
}

}  // namespace kap::engine::views
