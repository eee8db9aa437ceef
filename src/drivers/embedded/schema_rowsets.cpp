#include "drivers/embedded/schema_rowsets.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/ascii.hpp"
#include "data/schema_rows.hpp"
#include "data/value_type.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/values/value.hpp"

namespace kap::ado::embedded {
namespace {

Value schemaCell(std::string_view stored) {
    return Value(std::string(engine::schemaOf(stored)));
}

Value nameCell(std::string_view stored) {
    return Value(std::string(engine::bareName(stored)));
}

std::int64_t flagsOf(const ColumnInfo& info, const engine::Column& column) {
    const auto bit = [](bool set, FieldAttributeEnum flag) {
        return set ? static_cast<std::int64_t>(flag) : 0;
    };
    const bool setByDatabase = column.identity || column.isRowVersion();
    return bit(!setByDatabase, FieldAttributeEnum::adFldUnknownUpdatable) |
           bit(info.fixedLength, FieldAttributeEnum::adFldFixed) |
           bit(column.nullable, FieldAttributeEnum::adFldIsNullable) |
           bit(column.nullable, FieldAttributeEnum::adFldMayBeNull) |
           bit(info.isLong, FieldAttributeEnum::adFldLong) |
           bit(column.isRowVersion(), FieldAttributeEnum::adFldRowVersion);
}

void addSizes(std::vector<SchemaRows::Cell>& cells, const tsql::TypeSpec& type,
              const ColumnInfo& info) {
    const bool asText = tsql::isFineDate(type.type);
    if (tsql::isText(type.type) || tsql::isBinary(type.type) || asText) {
        const std::int64_t size = info.definedSize;
        const bool doubled = tsql::isNational(type.type) || asText;
        cells.emplace_back("CHARACTER_MAXIMUM_LENGTH", schemaNumber(size));
        cells.emplace_back("CHARACTER_OCTET_LENGTH", schemaNumber(doubled ? size * 2 : size));
    }
    if (tsql::isNumber(type.type) && info.precision != 255) {
        cells.emplace_back("NUMERIC_PRECISION", schemaNumber(info.precision));
    }
    if (tsql::isDecimal(type.type)) {
        cells.emplace_back("NUMERIC_SCALE", schemaNumber(info.numericScale));
    }
    if (tsql::isDate(type.type) && info.numericScale != 255) {
        cells.emplace_back("DATETIME_PRECISION", schemaNumber(info.numericScale));
    }
}

void addTables(SchemaRows& rows, const engine::SchemaCatalogue& catalogue) {
    std::vector<std::pair<std::string, const char*>> found;
    for (const engine::Table* table : catalogue.tables()) {
        found.emplace_back(table->name, "TABLE");
    }
    for (const engine::StoredObject& object : catalogue.objects()) {
        if (object.kind == engine::StoredKind::View) found.emplace_back(object.name, "VIEW");
    }
    std::ranges::sort(found, {}, [](const auto& each) { return asciiLower(each.first); });
    for (const auto& [name, type] : found) {
        rows.add({{"TABLE_SCHEMA", schemaCell(name)},
                  {"TABLE_NAME", nameCell(name)},
                  {"TABLE_TYPE", type}});
    }
}

void addColumns(SchemaRows& rows, const engine::SchemaCatalogue& catalogue) {
    for (const engine::Table* table : catalogue.tables()) {
        std::int64_t ordinal = 0;
        for (const engine::Column& column : table->columns) {
            const ColumnInfo info = engine::typeInfo(column.type);
            const bool has = column.defaultSql && !column.computed;
            const std::string given = has ? engine::shownSource(column) : "";
            std::vector<SchemaRows::Cell> cells = {
                {"TABLE_SCHEMA", schemaCell(table->name)},
                {"TABLE_NAME", nameCell(table->name)},
                {"COLUMN_NAME", column.name},
                {"ORDINAL_POSITION", schemaNumber(++ordinal)},
                {"COLUMN_HASDEFAULT", schemaFlag(!given.empty())},
                {"COLUMN_DEFAULT", schemaText(given)},
                {"COLUMN_FLAGS", schemaNumber(flagsOf(info, column))},
                {"IS_NULLABLE", schemaFlag(column.nullable)},
                {"DATA_TYPE", schemaNumber(static_cast<std::int64_t>(schemaType(info.type)))}};
            addSizes(cells, column.type, info);
            rows.add(cells);
        }
    }
}

std::vector<const engine::Column*> keyOf(const engine::Table& table) {
    std::vector<const engine::Column*> key;
    for (const engine::Column& column : table.columns) {
        if (column.keyOrdinal > 0) {
            key.push_back(&column);
        }
    }
    std::ranges::sort(key, {}, [](const engine::Column* column) { return column->keyOrdinal; });
    return key;
}

// Files of other programs have keys without a name.
std::string primaryKeyName(const std::vector<engine::ConstraintInfo>& constraints,
                           const engine::Table& table) {
    for (const engine::ConstraintInfo& each : constraints) {
        if (std::string_view(each.type) == "PK" && engine::sameName(each.table, table.name)) {
            return each.name;
        }
    }
    return {};
}

void addPrimaryKeys(SchemaRows& rows, const engine::SchemaCatalogue& catalogue) {
    const std::vector<engine::ConstraintInfo> constraints = catalogue.constraints();
    for (const engine::Table* table : catalogue.tables()) {
        const std::string name = primaryKeyName(constraints, *table);
        std::int64_t ordinal = 0;
        for (const engine::Column* column : keyOf(*table)) {
            rows.add({{"TABLE_SCHEMA", schemaCell(table->name)},
                      {"TABLE_NAME", nameCell(table->name)},
                      {"COLUMN_NAME", column->name},
                      {"ORDINAL", schemaNumber(++ordinal)},
                      {"PK_NAME", schemaText(name)}});
        }
    }
}

void addIndexes(SchemaRows& rows, const engine::SchemaCatalogue& catalogue) {
    constexpr std::int64_t kTree = 1;
    constexpr std::int64_t kAscending = 1;
    constexpr std::int64_t kDescending = 2;
    for (const engine::IndexInfo& index : catalogue.keysAndIndexes()) {
        for (std::size_t i = 0; i < index.columns.size(); ++i) {
            rows.add({{"TABLE_SCHEMA", schemaCell(index.table)},
                      {"TABLE_NAME", nameCell(index.table)},
                      {"INDEX_SCHEMA", schemaCell(index.table)},
                      {"INDEX_NAME", index.name},
                      {"PRIMARY_KEY", schemaFlag(index.key == "PK")},
                      {"UNIQUE", schemaFlag(index.unique)},
                      {"CLUSTERED", schemaFlag(false)},
                      {"TYPE", schemaNumber(kTree)},
                      {"AUTO_UPDATE", schemaFlag(true)},
                      {"ORDINAL_POSITION", schemaNumber(static_cast<std::int64_t>(i) + 1)},
                      {"COLUMN_NAME", index.columns[i]},
                      {"COLLATION", schemaNumber(index.descending[i] ? kDescending : kAscending)},
                      {"INTEGRATED", schemaFlag(false)}});
        }
    }
}

Value literalSign(tsql::SqlType type, bool opening) {
    if (tsql::isBinary(type)) {
        return opening ? Value{"0x"} : Value{};
    }
    const bool quoted =
        tsql::isText(type) || tsql::isDate(type) || type == tsql::SqlType::UniqueIdentifier;
    if (!quoted) {
        return {};
    }
    return opening && tsql::isNational(type) ? "N'" : "'";
}

Value createParameters(const tsql::TypeSpec& type, const ColumnInfo& info) {
    if (tsql::isDecimal(type.type)) {
        return "precision,scale";
    }
    if (tsql::isFineDate(type.type)) {
        return "scale";
    }
    const bool sized = tsql::isText(type.type) || tsql::isBinary(type.type);
    const bool counts = sized && !info.isLong && type.type != tsql::SqlType::Timestamp;
    return counts ? Value{"max length"} : Value{};
}

void addType(SchemaRows& rows, const tsql::TypeSpec& type, bool bestMatch) {
    constexpr std::int64_t kAllExceptLike = 3;
    constexpr std::int64_t kSearchable = 4;
    const ColumnInfo info = engine::typeInfo(type);
    const bool number = tsql::isNumber(type.type);
    const bool digits = number && info.precision != 255;
    const Value maximumScale = tsql::isDecimal(type.type) ? schemaNumber(info.precision) : Value{};
    const Value minimumScale = tsql::isDecimal(type.type) ? schemaNumber(0) : Value{};
    rows.add(
        {{"TYPE_NAME", tsql::typeName(type.type)},
         {"DATA_TYPE", schemaNumber(static_cast<std::int64_t>(schemaType(info.type)))},
         {"COLUMN_SIZE", schemaNumber(digits ? info.precision : info.definedSize)},
         {"LITERAL_PREFIX", literalSign(type.type, true)},
         {"LITERAL_SUFFIX", literalSign(type.type, false)},
         {"CREATE_PARAMS", createParameters(type, info)},
         {"IS_NULLABLE", schemaFlag(type.type != tsql::SqlType::Timestamp)},
         {"CASE_SENSITIVE", schemaFlag(false)},
         {"SEARCHABLE", schemaNumber(tsql::isText(type.type) ? kSearchable : kAllExceptLike)},
         {"UNSIGNED_ATTRIBUTE", number ? schemaFlag(type.type == tsql::SqlType::TinyInt) : Value{}},
         {"FIXED_PREC_SCALE", schemaFlag(tsql::isMoney(type.type))},
         {"AUTO_UNIQUE_VALUE", schemaFlag(false)},
         {"LOCAL_TYPE_NAME", tsql::typeName(type.type)},
         {"MINIMUM_SCALE", minimumScale},
         {"MAXIMUM_SCALE", maximumScale},
         {"IS_LONG", schemaFlag(info.isLong)},
         {"BEST_MATCH", schemaFlag(bestMatch)},
         {"IS_FIXEDLENGTH", schemaFlag(info.fixedLength)}});
}

void addTypes(SchemaRows& rows) {
    std::vector<tsql::TypeSpec> types;
    for (int i = 0; i < tsql::kSqlTypes; ++i) {
        tsql::TypeSpec& type = types.emplace_back(tsql::widestOf(static_cast<tsql::SqlType>(i)));
        type.precision = std::min<int>(type.precision, kWidestDecimal);
    }
    const auto code = [](const tsql::TypeSpec& type) {
        return schemaType(engine::typeInfo(type).type);
    };
    std::ranges::stable_sort(types, {}, code);
    for (std::size_t i = 0; i < types.size(); ++i) {
        addType(rows, types[i], i == 0 || code(types[i]) != code(types[i - 1]));
    }
}

}  // namespace

Result schemaRowset(const engine::SchemaCatalogue& catalogue, SchemaEnum kind,
                    const SchemaRestrictions& wanted) {
    SchemaRows rows(kind, wanted);
    switch (kind) {
        case SchemaEnum::adSchemaTables:
            addTables(rows, catalogue);
            break;
        case SchemaEnum::adSchemaColumns:
            addColumns(rows, catalogue);
            break;
        case SchemaEnum::adSchemaPrimaryKeys:
            addPrimaryKeys(rows, catalogue);
            break;
        case SchemaEnum::adSchemaIndexes:
            addIndexes(rows, catalogue);
            break;
        case SchemaEnum::adSchemaProviderTypes:
            addTypes(rows);
            break;
        default:  // has been refused
            break;
    }
    return rows.take();
}

}  // namespace kap::ado::embedded
