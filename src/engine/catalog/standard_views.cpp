#include <array>
#include <string_view>

#include "engine/catalog/source_text.hpp"
#include "engine/catalog/view_rows.hpp"
#include "tsql/parser.hpp"

// The standard's INFORMATION_SCHEMA, but for what its keys refer to.
namespace kap::engine::views {
namespace {

using tsql::SqlType;
using tsql::TypeSpec;

SystemRows tables(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"TABLE_TYPE", {SqlType::VarChar, 10}}},
                    {}};
    const auto add = [&](const std::string& name, const char* type) {
        view.rows.push_back(
            {text(catalogue.databaseName()), schemaText(name), bare(name), text(type)});
    };
    for (const Table* table : catalogue.tables())
        add(table->name, "BASE TABLE");
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind == StoredKind::View) add(object.name, "VIEW");
    }
    return view;
}

Value lengthOf(const TypeSpec& type) {
    constexpr std::int64_t kLargest = 2147483647;
    if (tsql::isVariant(type.type)) return std::int64_t{0};
    if (!tsql::isText(type.type) && !tsql::isBinary(type.type)) return std::monostate{};
    return number(tsql::isLarge(type.type) ? kLargest / (type.type == SqlType::NText ? 2 : 1)
                                           : type.length);
}

// The same in bytes.
Value octetsOf(const TypeSpec& type) {
    constexpr std::int64_t kBytesOfUnit = 2;
    const Value length = lengthOf(type);
    const auto* units = std::get_if<std::int64_t>(&length);
    const bool wide = tsql::isNational(type.type) && units != nullptr && *units > 0;
    return wide ? number(*units * kBytesOfUnit) : length;
}

Value characterSet(const TypeSpec& type) {
    if (!tsql::isText(type.type)) return {};
    return text(tsql::isNational(type.type) ? "UNICODE" : "iso_1");
}

SystemRows columns(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"COLUMN_NAME", kName},
                     {"ORDINAL_POSITION", kInt},
                     {"COLUMN_DEFAULT", kText},
                     {"IS_NULLABLE", {SqlType::VarChar, 3}},
                     {"DATA_TYPE", kName},
                     {"CHARACTER_MAXIMUM_LENGTH", kInt},
                     {"CHARACTER_OCTET_LENGTH", kInt},
                     {"NUMERIC_PRECISION", kTinyInt},
                     {"NUMERIC_SCALE", kInt},
                     {"DATETIME_PRECISION", kSmallInt},
                     {"CHARACTER_SET_NAME", kName},
                     {"COLLATION_NAME", kName}},
                    {}};
    for (const Table* table : catalogue.tables()) {
        std::int64_t ordinal = 0;
        for (const Column& column : table->columns) {
            const TypeSpec& type = column.type;
            const bool counts = tsql::isNumber(type.type) && type.type != SqlType::Bit;
            const bool dated = tsql::isDate(type.type);
            const bool given = column.defaultSql && !column.computed;
            view.rows.push_back(
                {text(catalogue.databaseName()), schemaText(table->name), bare(table->name),
                 text(column.name), number(++ordinal),
                 given ? text(shownDefinition(shownSource(column))) : Value(),
                 text(column.nullable ? "YES" : "NO"), text(tsql::typeName(type.type)),
                 lengthOf(type), octetsOf(type), counts ? number(tsql::precisionOf(type)) : Value(),
                 counts && !tsql::isApproximate(type.type) ? number(tsql::scaleOf(type)) : Value(),
                 dated ? number(tsql::scaleOf(type)) : Value(), characterSet(type),
                 shownCollation(column)});
        }
    }
    return view;
}

const char* standardType(std::string_view type) {
    if (type == "PK") return "PRIMARY KEY";
    if (type == "UQ") return "UNIQUE";
    return type == "F " ? "FOREIGN KEY" : "CHECK";
}

SystemRows constraints(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"CONSTRAINT_CATALOG", kName},
                     {"CONSTRAINT_SCHEMA", kName},
                     {"CONSTRAINT_NAME", kName},
                     {"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"CONSTRAINT_TYPE", {SqlType::VarChar, 11}}},
                    {}};
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (std::string_view(each.type) == "D ") continue;
        const Value database = text(catalogue.databaseName());
        view.rows.push_back({database, schemaText(each.table), text(each.name), database,
                             schemaText(each.table), bare(each.table),
                             text(standardType(each.type))});
    }
    return view;
}

SystemRows keyColumns(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"CONSTRAINT_SCHEMA", kName},
                     {"CONSTRAINT_NAME", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"COLUMN_NAME", kName},
                     {"ORDINAL_POSITION", kInt}},
                    {}};
    for (const ConstraintInfo& each : catalogue.constraints()) {
        const std::string_view type = each.type;
        if (type == "D " || type == "C ") continue;
        std::int64_t ordinal = 0;
        for (const std::string& column : each.columns) {
            view.rows.push_back({schemaText(each.table), text(each.name), schemaText(each.table),
                                 bare(each.table), text(column), number(++ordinal)});
        }
    }
    return view;
}

SystemRows viewTexts(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName},
                     {"VIEW_DEFINITION", kText}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::View) continue;
        view.rows.push_back({text(catalogue.databaseName()), schemaText(object.name),
                             bare(object.name), text(object.text)});
    }
    return view;
}

SystemRows routines(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"ROUTINE_SCHEMA", kName},
                     {"ROUTINE_NAME", kName},
                     {"ROUTINE_TYPE", kShort},
                     {"ROUTINE_DEFINITION", kText}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Procedure && object.kind != StoredKind::Function) continue;
        view.rows.push_back({schemaText(object.name), bare(object.name),
                             text(object.kind == StoredKind::Procedure ? "PROCEDURE" : "FUNCTION"),
                             text(object.text)});
    }
    return view;
}

SystemRows parameters(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"SPECIFIC_SCHEMA", kName},
                     {"SPECIFIC_NAME", kName},
                     {"ORDINAL_POSITION", kInt},
                     {"PARAMETER_MODE", kShort},
                     {"PARAMETER_NAME", kName},
                     {"DATA_TYPE", kName},
                     {"CHARACTER_MAXIMUM_LENGTH", kInt},
                     {"NUMERIC_PRECISION", kInt},
                     {"NUMERIC_SCALE", kInt}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Procedure && object.kind != StoredKind::Function) continue;
        const auto module = catalogue.findModule(object.kind, object.name);
        if (module == nullptr) continue;
        std::int64_t ordinal = 0;
        for (const tsql::ParameterDefinition& each : module->definition.parameters) {
            const bool exact = tsql::isDecimal(each.type.type);
            view.rows.push_back({schemaText(object.name), bare(object.name), number(++ordinal),
                                 text(each.output ? "INOUT" : "IN"), text(each.name),
                                 text(tsql::typeName(each.type.type)), lengthOf(each.type),
                                 exact ? number(each.type.precision) : Value(),
                                 exact ? number(each.type.scale) : Value()});
        }
    }
    return view;
}

SystemRows schemata(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"CATALOG_NAME", kName}, {"SCHEMA_NAME", kName}, {"SCHEMA_OWNER", kName}}, {}};
    for (const SchemaInfo& schema : catalogue.schemas())
        view.rows.push_back({text(catalogue.databaseName()), text(schema.name), text("dbo")});
    return view;
}

// The types that have names of their own.
SystemRows domains(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"DOMAIN_CATALOG", kName},
                     {"DOMAIN_SCHEMA", kName},
                     {"DOMAIN_NAME", kName},
                     {"DATA_TYPE", kName},
                     {"CHARACTER_MAXIMUM_LENGTH", kInt},
                     {"NUMERIC_PRECISION", kInt},
                     {"NUMERIC_SCALE", kInt},
                     {"DOMAIN_DEFAULT", kName}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Type || isTableType(object)) continue;
        const tsql::TypeSpec type = tsql::parseType(object.text);
        const int precision = tsql::precisionOf(type);
        const bool numeric = tsql::isNumber(type.type) && precision > 0;
        view.rows.push_back({text(catalogue.databaseName()), schemaText(object.name),
                             bare(object.name), text(tsql::typeName(type.type)), lengthOf(type),
                             numeric ? number(precision) : Value(),
                             numeric ? number(tsql::scaleOf(type)) : Value(), Value()});
    }
    return view;
}

constexpr auto kStandardViews = std::to_array<View>({
    {"information_schema", "schemata", schemata},
    {"information_schema", "tables", tables},
    {"information_schema", "columns", columns},
    {"information_schema", "views", viewTexts},
    {"information_schema", "routines", routines},
    {"information_schema", "parameters", parameters},
    {"information_schema", "domains", domains},
    {"information_schema", "table_constraints", constraints},
    {"information_schema", "key_column_usage", keyColumns},
});

}  // namespace

std::span<const View> standardViews() {
    return kStandardViews;
}

}  // namespace kap::engine::views
