#include <array>

#include "engine/catalog/index_properties.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/server_identity.hpp"
#include "engine/catalog/view_rows.hpp"
#include "tsql/statements.hpp"

// The views that tools ask for when they connect or read a whole database: what programs' scripts
// seldom name, and what a database of one file has none of.
namespace kap::engine::views {
namespace {

using tsql::SqlType;
using tsql::TypeSpec;

constexpr TypeSpec kWholeNumber{SqlType::BigInt};
constexpr TypeSpec kLetter{SqlType::Char, 1};
constexpr TypeSpec kTwoLetters{SqlType::Char, 2};

// The rows of sys.name, which has no others here.
SystemRows sameAs(const SchemaCatalogue& catalogue, const char* name) {
    return *catalogue.systemRows(tsql::ObjectName{{"sys", name}, 0});
}

// Each table, and each of its indexes, is one partition. Number 1 is the primary key's index, which
// stands for the table; a table without a key is number 0.
SystemRows tablePartitions(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"partition_id", kWholeNumber},
                     {"object_id", kInt},
                     {"index_id", kInt},
                     {"partition_number", kInt},
                     {"hobt_id", kWholeNumber},
                     {"rows", kWholeNumber},
                     {"data_compression", kTinyInt},
                     {"data_compression_desc", kShort}},
                    {}};
    view.ofTheMoment = true;
    const std::vector<NumberedIndex> indexes = numberedIndexes(catalogue);
    for (const Table* table : catalogue.tables()) {
        const std::int64_t object = objectId(table->name);
        const std::int64_t rows = catalogue.countRows(*table);
        const auto add = [&](std::int64_t index) {
            const std::int64_t own = static_cast<std::int64_t>(view.rows.size()) + 1;
            view.rows.push_back({number(own), number(object), number(index), number(1), number(own),
                                 number(rows), number(0), text("NONE")});
        };
        bool hasKey = false;
        for (const NumberedIndex& each : indexes) {
            if (!sameName(each.index.table, table->name)) continue;
            hasKey = hasKey || each.number == 1;
            add(each.number);
        }
        if (!hasKey) add(0);
    }
    return view;
}

SystemRows moduleParameters(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"object_id", kInt},
                     {"name", kName},
                     {"parameter_id", kInt},
                     {"system_type_id", kTinyInt},
                     {"user_type_id", kInt},
                     {"max_length", kSmallInt},
                     {"precision", kTinyInt},
                     {"scale", kTinyInt},
                     {"is_output", kBit},
                     {"has_default_value", kBit}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Procedure && object.kind != StoredKind::Function) continue;
        const auto module = catalogue.findModule(object.kind, object.name);
        if (module == nullptr) continue;
        std::int64_t ordinal = 0;
        for (const tsql::ParameterDefinition& each : module->definition.parameters) {
            const std::int64_t type = tsql::factsOf(each.type.type).id;
            view.rows.push_back({number(objectId(object.name)), text(each.name), number(++ordinal),
                                 number(type), number(type), number(tsql::bytesOf(each.type)),
                                 number(tsql::precisionOf(each.type)),
                                 number(tsql::scaleOf(each.type)), flag(each.output), flag(false)});
        }
    }
    return view;
}

SystemRows triggerEvents(const SchemaCatalogue& catalogue) {
    SystemRows view{
        {{"object_id", kInt}, {"type", kInt}, {"type_desc", kShort}, {"is_trigger_event", kBit}},
        {}};
    struct Event {
        std::uint8_t bit;
        const char* name;
    };
    constexpr std::array kEvents{Event{tsql::kOnInsert, "INSERT"}, Event{tsql::kOnUpdate, "UPDATE"},
                                 Event{tsql::kOnDelete, "DELETE"}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Trigger) continue;
        const auto module = catalogue.findModule(StoredKind::Trigger, object.name);
        if (module == nullptr) continue;
        std::int64_t place = 0;
        for (const Event& event : kEvents) {
            ++place;
            if ((module->definition.events & event.bit) == 0) continue;
            view.rows.push_back(
                {number(objectId(object.name)), number(place), text(event.name), flag(true)});
        }
    }
    return view;
}

// The one owner, and the names that every database has.
SystemRows databasePrincipals(const SchemaCatalogue& /*catalogue*/) {
    SystemRows view{{{"name", kName},
                     {"principal_id", kInt},
                     {"type", kLetter},
                     {"type_desc", kShort},
                     {"default_schema_name", kName},
                     {"is_fixed_role", kBit}},
                    {}};
    view.rows = {
        {text("public"), number(0), text("R"), text("DATABASE_ROLE"), Value(), flag(false)},
        {text("dbo"), number(1), text("S"), text("SQL_USER"), text("dbo"), flag(false)}};
    return view;
}

SystemRows logins(const SchemaCatalogue& /*catalogue*/) {
    SystemRows view{{{"name", kName},
                     {"principal_id", kInt},
                     {"type", kLetter},
                     {"type_desc", kShort},
                     {"is_disabled", kBit}},
                    {}};
    view.rows.push_back({text(loginName()), number(1), text("S"), text("SQL_LOGIN"), flag(false)});
    return view;
}

SystemRows fileGroups(const SchemaCatalogue& /*catalogue*/) {
    SystemRows view{{{"name", kName},
                     {"data_space_id", kInt},
                     {"type", kTwoLetters},
                     {"type_desc", kShort},
                     {"is_default", kBit},
                     {"is_read_only", kBit}},
                    {}};
    view.rows.push_back(
        {text("PRIMARY"), number(1), text("FG"), text("ROWS_FILEGROUP"), flag(true), flag(false)});
    return view;
}

SystemRows extendedProperties(const SchemaCatalogue& /*catalogue*/) {
    return {{{"class", kTinyInt},
             {"class_desc", kShort},
             {"major_id", kInt},
             {"minor_id", kInt},
             {"name", kName},
             {"value", kText}},
            {}};
}

SystemRows columnStatistics(const SchemaCatalogue& /*catalogue*/) {
    return {{{"object_id", kInt},
             {"name", kName},
             {"stats_id", kInt},
             {"auto_created", kBit},
             {"user_created", kBit},
             {"no_recompute", kBit}},
            {}};
}

SystemRows assemblies(const SchemaCatalogue& /*catalogue*/) {
    return {{{"name", kName}, {"principal_id", kInt}, {"assembly_id", kInt}}, {}};
}

SystemRows xmlSchemas(const SchemaCatalogue& /*catalogue*/) {
    return {{{"xml_collection_id", kInt}, {"schema_id", kInt}, {"name", kName}}, {}};
}

SystemRows fullTextIndexes(const SchemaCatalogue& /*catalogue*/) {
    return {{{"object_id", kInt}, {"unique_index_id", kInt}, {"is_enabled", kBit}}, {}};
}

SystemRows tableTypes(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"name", kName},
                     {"user_type_id", kInt},
                     {"schema_id", kInt},
                     {"is_user_defined", kBit},
                     {"is_table_type", kBit}},
                    {}};
    constexpr std::int64_t kFirstUserType = 256;
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Type || !isTableType(object)) continue;
        view.rows.push_back({bare(object.name), number(kFirstUserType + object.id),
                             schemaNumber(catalogue, object.name), flag(true), flag(true)});
    }
    return view;
}

// --- INFORMATION_SCHEMA

SystemRows columnsOfConstraints(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"COLUMN_NAME", kName},
                     {"CONSTRAINT_CATALOG", kName},
                     {"CONSTRAINT_SCHEMA", kName},
                     {"CONSTRAINT_NAME", kName}},
                    {}};
    const Value database = text(catalogue.databaseName());
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (std::string_view(each.type) == "D ") continue;
        for (const std::string& column : each.columns) {
            view.rows.push_back({database, schemaText(each.table), bare(each.table), text(column),
                                 database, schemaText(each.table), text(each.name)});
        }
    }
    return view;
}

SystemRows tablesOfConstraints(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"CONSTRAINT_CATALOG", kName},
                     {"CONSTRAINT_SCHEMA", kName},
                     {"CONSTRAINT_NAME", kName}},
                    {}};
    const Value database = text(catalogue.databaseName());
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (std::string_view(each.type) == "D ") continue;
        view.rows.push_back({database, schemaText(each.table), bare(each.table), database,
                             schemaText(each.table), text(each.name)});
    }
    return view;
}

constexpr auto kToolViews = std::to_array<View>({
    {"sys", "all_objects", [](const SchemaCatalogue& c) { return sameAs(c, "objects"); }},
    {"sys", "all_columns", [](const SchemaCatalogue& c) { return sameAs(c, "columns"); }},
    {"sys", "all_views", [](const SchemaCatalogue& c) { return sameAs(c, "views"); }},
    {"sys", "all_sql_modules", [](const SchemaCatalogue& c) { return sameAs(c, "sql_modules"); }},
    {"sys", "all_parameters", moduleParameters},
    {"sys", "parameters", moduleParameters},
    {"sys", "partitions", tablePartitions},
    {"sys", "trigger_events", triggerEvents},
    {"sys", "database_principals", databasePrincipals},
    {"sys", "server_principals", logins},
    {"sys", "filegroups", fileGroups},
    {"sys", "data_spaces", fileGroups},
    {"sys", "extended_properties", extendedProperties},
    {"sys", "stats", columnStatistics},
    {"sys", "assemblies", assemblies},
    {"sys", "xml_schema_collections", xmlSchemas},
    {"sys", "fulltext_indexes", fullTextIndexes},
    {"sys", "table_types", tableTypes},
    {"information_schema", "constraint_column_usage", columnsOfConstraints},
    {"information_schema", "constraint_table_usage", tablesOfConstraints},
});

}  // namespace

std::span<const View> toolViews() {
    return kToolViews;
}

}  // namespace kap::engine::views
