#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/catalog/view_rows.hpp"

// The views by which the database describes itself, as far as scripts and tools ask for them: the
// server's older and newer system tables.
namespace kap::engine {
namespace views {
namespace {

using tsql::SqlType;
using tsql::TypeSpec;

constexpr TypeSpec kTwo{SqlType::Char, 2};

// --- Objects

struct ObjectRow {
    std::string name;  // with its schema, as the file stores it
    std::string type;
    std::string parent;
};

std::vector<ObjectRow> objectRows(const SchemaCatalogue& catalogue) {
    std::vector<ObjectRow> rows;
    for (const Table* table : catalogue.tables())
        rows.push_back({table->name, "U ", ""});
    for (const StoredObject& object : catalogue.objects()) {
        if (hasTableName(object.kind)) {
            rows.push_back({object.name, objectType(catalogue, object), object.parent});
        }
    }
    for (const ConstraintInfo& constraint : catalogue.constraints()) {
        rows.push_back({storedName(constraint), constraint.type, constraint.table});
    }
    return rows;
}

// What the older servers kept about the kind in the lowest bits: 3 a user's table, 2 a view, 4 a
// procedure, 8 a trigger.
std::int64_t sysstat(const std::string& type) {
    if (type == "U ") return 3;
    if (type == "V ") return 2;
    if (type == "P ") return 4;
    if (type == "TR") return 8;
    return 0;
}

const char* typeDescription(const std::string& type) {
    static constexpr std::pair<std::string_view, const char*> kDescriptions[] = {
        {"U ", "USER_TABLE"},
        {"V ", "VIEW"},
        {"P ", "SQL_STORED_PROCEDURE"},
        {"FN", "SQL_SCALAR_FUNCTION"},
        {"IF", "SQL_INLINE_TABLE_VALUED_FUNCTION"},
        {"TF", "SQL_TABLE_VALUED_FUNCTION"},
        {"TR", "SQL_TRIGGER"},
        {"SO", "SEQUENCE_OBJECT"},
        {"SN", "SYNONYM"},
        {"PK", "PRIMARY_KEY_CONSTRAINT"},
        {"UQ", "UNIQUE_CONSTRAINT"},
        {"F ", "FOREIGN_KEY_CONSTRAINT"},
        {"C ", "CHECK_CONSTRAINT"},
        {"D ", "DEFAULT_CONSTRAINT"}};
    for (const auto& [known, description] : kDescriptions) {
        if (known == type) return description;
    }
    return "";
}

Value parentId(const ObjectRow& row) {
    return number(row.parent.empty() ? 0 : objectId(row.parent));
}

SystemRows sysobjects(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"name", kName},
                     {"id", kInt},
                     {"xtype", kTwo},
                     {"type", kTwo},
                     {"uid", kSmallInt},
                     {"parent_obj", kInt},
                     {"sysstat", kSmallInt},
                     {"category", kInt}},
                    {}};
    for (const ObjectRow& row : objectRows(catalogue)) {
        const std::string older = row.type == "PK" || row.type == "UQ" ? "K " : row.type;
        view.rows.push_back({bare(row.name), number(objectId(row.name)), text(row.type),
                             text(older), schemaNumber(catalogue, row.name), parentId(row),
                             number(sysstat(row.type)), number(0)});
    }
    return view;
}

SystemRows sysObjects(const SchemaCatalogue& catalogue, std::string_view types) {
    SystemRows view{{{"name", kName},
                     {"object_id", kInt},
                     {"schema_id", kInt},
                     {"parent_object_id", kInt},
                     {"type", kTwo},
                     {"type_desc", kShort},
                     {"is_ms_shipped", kBit}},
                    {}};
    for (const ObjectRow& row : objectRows(catalogue)) {
        if (!types.empty() && types.find(row.type) == std::string_view::npos) continue;
        view.rows.push_back({bare(row.name), number(objectId(row.name)),
                             schemaNumber(catalogue, row.name), parentId(row), text(row.type),
                             text(typeDescription(row.type)), flag(false)});
    }
    return view;
}

// What else tools ask of tables, none of which is ever so.
SystemRows sysTables(const SchemaCatalogue& catalogue) {
    SystemRows view = sysObjects(catalogue, "U ");
    for (const char* name : {"is_memory_optimized", "is_filetable", "is_external", "is_replicated"})
        view.columns.push_back({name, kBit});
    for (const char* name : {"temporal_type", "durability"})
        view.columns.push_back({name, kTinyInt});
    for (std::vector<Value>& row : view.rows)
        row.resize(view.columns.size(), number(0));
    return view;
}

SystemRows sysTriggers(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"name", kName},
                     {"object_id", kInt},
                     {"parent_id", kInt},
                     {"is_disabled", kBit},
                     {"is_instead_of_trigger", kBit}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Trigger) continue;
        const auto module = catalogue.findModule(StoredKind::Trigger, object.name);
        view.rows.push_back({bare(object.name), number(objectId(object.name)),
                             number(objectId(object.parent)), flag(!object.enabled),
                             flag(module != nullptr && module->definition.insteadOf)});
    }
    return view;
}

SystemRows syscomments(const SchemaCatalogue& catalogue, bool modern) {
    SystemRows view{{{modern ? "object_id" : "id", kInt}, {modern ? "definition" : "text", kText}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind > StoredKind::Trigger) continue;
        view.rows.push_back({number(objectId(object.name)), text(object.text)});
    }
    return view;
}

// --- Columns and types

std::int64_t typeId(SqlType type) {
    return tsql::factsOf(type).id;
}

std::vector<SqlType> typesById() {
    std::vector<SqlType> types;
    types.reserve(tsql::kSqlTypes);
    for (int i = 0; i < tsql::kSqlTypes; ++i) {
        types.push_back(static_cast<SqlType>(i));
    }
    std::ranges::sort(types, {}, typeId);
    return types;
}

// The number of the constraint that holds a column's default; 0 without one.
Value defaultId(const Table& table, const Column& column) {
    if (!column.defaultSql || column.computed) return number(0);
    const std::string& given = column.defaultName;
    return number(objectId(storedName(schemaOf(table.name),
                                      given.empty() ? unnamedDefault(table, column.name) : given)));
}

SystemRows columnRows(const SchemaCatalogue& catalogue, bool modern) {
    SystemRows view;
    if (modern) {
        view.columns = {
            {"object_id", kInt},          {"name", kName},        {"column_id", kInt},
            {"system_type_id", kTinyInt}, {"user_type_id", kInt}, {"max_length", kSmallInt},
            {"precision", kTinyInt},      {"scale", kTinyInt},    {"collation_name", kName},
            {"is_nullable", kBit},        {"is_identity", kBit},  {"is_computed", kBit},
            {"default_object_id", kInt}};
    } else {
        view.columns = {{"id", kInt},         {"name", kName},          {"colid", kSmallInt},
                        {"xtype", kTinyInt},  {"xusertype", kSmallInt}, {"length", kSmallInt},
                        {"prec", kSmallInt},  {"scale", kInt},          {"collation", kName},
                        {"isnullable", kInt}, {"colstat", kSmallInt},   {"iscomputed", kInt},
                        {"cdefault", kInt}};
    }
    for (const Table* table : catalogue.tables()) {
        std::int64_t ordinal = 0;
        for (const Column& column : table->columns) {
            view.rows.push_back(
                {number(objectId(table->name)), text(column.name), number(++ordinal),
                 number(typeId(column.type.type)), number(typeId(column.type.type)),
                 number(tsql::bytesOf(column.type)), number(tsql::precisionOf(column.type)),
                 number(tsql::scaleOf(column.type)), views::shownCollation(column),
                 flag(column.nullable), flag(column.identity.has_value()), flag(column.computed),
                 defaultId(*table, column)});
        }
    }
    return view;
}

// A type with a name of its own.
struct UserType {
    explicit UserType(const StoredObject& object)
        : number(kFirstUserType + object.id), isTable(isTableType(object)) {
        if (isTable) return;
        const TypeSpec type = tsql::parseType(object.text);
        systemType = typeId(type.type);
        bytes = tsql::bytesOf(type);
        precision = tsql::precisionOf(type);
        scale = tsql::scaleOf(type);
        nullable = object.parent != kNotNull;
    }

    static constexpr std::int64_t kFirstUserType = 256;
    static constexpr std::int64_t kTableTypeId = 243;
    std::int64_t number;
    bool isTable;
    std::int64_t systemType = kTableTypeId;
    std::int64_t bytes = -1;
    std::int64_t precision = 0;
    std::int64_t scale = 0;
    bool nullable = false;
};

SystemRows olderTypes(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"name", kName},
                     {"xtype", kTinyInt},
                     {"xusertype", kSmallInt},
                     {"length", kSmallInt},
                     {"status", kTinyInt}},
                    {}};
    for (const SqlType type : typesById()) {
        const tsql::TypeFacts& facts = tsql::factsOf(type);
        view.rows.push_back(
            {text(facts.name), number(facts.id), number(facts.id), number(facts.bytes), number(0)});
    }
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Type) continue;
        const UserType user(object);
        view.rows.push_back({bare(object.name), number(user.systemType), number(user.number),
                             number(user.bytes), number(1)});
    }
    return view;
}

SystemRows sysTypes(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"name", kName},
                     {"system_type_id", kTinyInt},
                     {"user_type_id", kInt},
                     {"schema_id", kInt},
                     {"max_length", kSmallInt},
                     {"precision", kTinyInt},
                     {"scale", kTinyInt},
                     {"is_nullable", kBit},
                     {"is_user_defined", kBit},
                     {"is_assembly_type", kBit},
                     {"is_table_type", kBit}},
                    {}};
    constexpr std::int64_t kSysSchema = 4;
    for (const SqlType type : typesById()) {
        const tsql::TypeFacts& facts = tsql::factsOf(type);
        const TypeSpec spec{type};
        view.rows.push_back({text(facts.name), number(facts.id), number(facts.id),
                             number(kSysSchema), number(facts.bytes),
                             number(tsql::precisionOf(spec)), number(tsql::scaleOf(spec)),
                             flag(true), flag(false), flag(false), flag(false)});
    }
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Type) continue;
        const UserType user(object);
        view.rows.push_back({bare(object.name), number(user.systemType), number(user.number),
                             schemaNumber(catalogue, object.name), number(user.bytes),
                             number(user.precision), number(user.scale), flag(user.nullable),
                             flag(true), flag(false), flag(user.isTable)});
    }
    return view;
}

// --- The database itself

constexpr std::array kServersDatabases{"master", "tempdb", "model", "msdb"};

bool isOfEveryServer(std::string_view database) {
    return std::ranges::any_of(kServersDatabases,
                               [&](const char* each) { return sameName(each, database); });
}

SystemRows databases(const SchemaCatalogue& catalogue, bool modern) {
    SystemRows view{{{"name", kName}, {modern ? "database_id" : "dbid", kInt}}, {}};
    std::int64_t id = 0;
    for (const char* name : kServersDatabases)
        view.rows.push_back({text(name), number(++id)});
    // A new file has no database that a script could find and drop.
    if (!catalogue.tables().empty() && !isOfEveryServer(catalogue.databaseName()))
        view.rows.push_back({text(catalogue.databaseName()), number(++id)});
    return view;
}

SystemRows owners(const SchemaCatalogue& /*catalogue*/) {
    SystemRows view{{{"name", kName}, {"uid", kInt}}, {}};
    view.rows.push_back({text("dbo"), number(1)});
    view.rows.push_back({text("public"), number(0)});
    return view;
}

SystemRows schemaRows(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"name", kName}, {"schema_id", kInt}, {"principal_id", kInt}}, {}};
    for (const SchemaInfo& schema : catalogue.schemas())
        view.rows.push_back({text(schema.name), number(schema.id), number(1)});
    return view;
}

constexpr auto kSystemViews = std::to_array<views::View>({
    {"", "sysobjects", sysobjects},
    {"", "syscolumns", [](const SchemaCatalogue& c) { return columnRows(c, false); }},
    {"", "systypes", olderTypes},
    {"", "syscomments", [](const SchemaCatalogue& c) { return syscomments(c, false); }},
    {"", "sysdatabases", [](const SchemaCatalogue& c) { return databases(c, false); }},
    {"", "sysusers", owners},
    {"sys", "objects", [](const SchemaCatalogue& c) { return sysObjects(c, ""); }},
    {"sys", "tables", sysTables},
    {"sys", "views", [](const SchemaCatalogue& c) { return sysObjects(c, "V "); }},
    {"sys", "procedures", [](const SchemaCatalogue& c) { return sysObjects(c, "P "); }},
    {"sys", "triggers", sysTriggers},
    {"sys", "columns", [](const SchemaCatalogue& c) { return columnRows(c, true); }},
    {"sys", "types", sysTypes},
    {"sys", "sql_modules", [](const SchemaCatalogue& c) { return syscomments(c, true); }},
    {"sys", "databases", [](const SchemaCatalogue& c) { return databases(c, true); }},
    {"sys", "schemas", schemaRows},
});

}  // namespace
}  // namespace views

// "master.dbo.sysdatabases" and "master..sysdatabases" are the same views: there is one database.
std::optional<SystemRows> SchemaCatalogue::systemRows(const tsql::ObjectName& name) const {
    const std::string last = asciiLower(name.last());
    const std::size_t parts = name.parts.size();
    if (parts > 3 || (parts == 3 && !isDatabase(name.parts.front()) &&
                      !views::isOfEveryServer(name.parts.front()))) {
        return std::nullopt;
    }
    std::string owner = parts > 1 ? asciiLower(name.parts[parts - 2]) : "";
    if (owner == "dbo") owner.clear();
    for (const std::span<const views::View> list :
         {std::span<const views::View>(views::kSystemViews), views::keyViews(), views::indexViews(),
          views::constraintViews(), views::standardViews(), views::sequenceViews(),
          views::dependencyViews(), views::toolViews()}) {
        if (auto rows = rowsOf(list, *this, owner, last)) return rows;
    }
    for (const AddedView& view : addedViews_) {
        if (view.owner == owner && view.name == last) return view.rows();
    }
    return std::nullopt;
}

}  // namespace kap::engine
