#include "drivers/embedded/schema_rowsets.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/ascii.hpp"
#include "data/schema_rows.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/values/value.hpp"

namespace kap::ado::embedded {
namespace {

constexpr const char* kOwner = "dbo";

CellValue whole(std::int64_t value) {
    return value;
}

CellValue boolean(bool value) {
    return whole(value ? 1 : 0);
}

CellValue textOrNull(const std::string& text) {
    return text.empty() ? CellValue{} : CellValue{text};
}

// Schema rowsets do not tell texts of varying length from fixed ones.
DataTypeEnum generalType(DataTypeEnum type) {
    switch (type) {
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adLongVarChar:
            return DataTypeEnum::adChar;
        case DataTypeEnum::adVarWChar:
        case DataTypeEnum::adLongVarWChar:
            return DataTypeEnum::adWChar;
        case DataTypeEnum::adVarBinary:
        case DataTypeEnum::adLongVarBinary:
            return DataTypeEnum::adBinary;
        default:
            return type;
    }
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
    if (tsql::isText(type.type) || tsql::isBinary(type.type)) {
        const std::int64_t size = info.definedSize;
        const bool doubled = tsql::isNational(type.type);
        cells.emplace_back("CHARACTER_MAXIMUM_LENGTH", whole(size));
        cells.emplace_back("CHARACTER_OCTET_LENGTH", whole(doubled ? size * 2 : size));
    }
    if (tsql::isNumber(type.type) && info.precision != 255) {
        cells.emplace_back("NUMERIC_PRECISION", whole(info.precision));
    }
    if (tsql::isDecimal(type.type)) {
        cells.emplace_back("NUMERIC_SCALE", whole(info.numericScale));
    }
    if (tsql::isDate(type.type) && info.numericScale != 255) {
        cells.emplace_back("DATETIME_PRECISION", whole(info.numericScale));
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
        rows.add({{"TABLE_SCHEMA", kOwner}, {"TABLE_NAME", name}, {"TABLE_TYPE", type}});
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
                {"TABLE_SCHEMA", kOwner},
                {"TABLE_NAME", table->name},
                {"COLUMN_NAME", column.name},
                {"ORDINAL_POSITION", whole(++ordinal)},
                {"COLUMN_HASDEFAULT", boolean(!given.empty())},
                {"COLUMN_DEFAULT", textOrNull(given)},
                {"COLUMN_FLAGS", whole(flagsOf(info, column))},
                {"IS_NULLABLE", boolean(column.nullable)},
                {"DATA_TYPE", whole(static_cast<std::int64_t>(generalType(info.type)))}};
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
            rows.add({{"TABLE_SCHEMA", kOwner},
                      {"TABLE_NAME", table->name},
                      {"COLUMN_NAME", column->name},
                      {"ORDINAL", whole(++ordinal)},
                      {"PK_NAME", textOrNull(name)}});
        }
    }
}

void addIndexes(SchemaRows& rows, const engine::SchemaCatalogue& catalogue) {
    constexpr std::int64_t kTree = 1;
    constexpr std::int64_t kAscending = 1;
    constexpr std::int64_t kDescending = 2;
    for (const engine::IndexInfo& index : catalogue.keysAndIndexes()) {
        for (std::size_t i = 0; i < index.columns.size(); ++i) {
            rows.add({{"TABLE_SCHEMA", kOwner},
                      {"TABLE_NAME", index.table},
                      {"INDEX_SCHEMA", kOwner},
                      {"INDEX_NAME", index.name},
                      {"PRIMARY_KEY", boolean(index.key == "PK")},
                      {"UNIQUE", boolean(index.unique)},
                      {"CLUSTERED", boolean(false)},
                      {"TYPE", whole(kTree)},
                      {"AUTO_UPDATE", boolean(true)},
                      {"ORDINAL_POSITION", whole(static_cast<std::int64_t>(i) + 1)},
                      {"COLUMN_NAME", index.columns[i]},
                      {"COLLATION", whole(index.descending[i] ? kDescending : kAscending)},
                      {"INTEGRATED", boolean(false)}});
        }
    }
}

CellValue literalSign(tsql::SqlType type, bool opening) {
    if (tsql::isBinary(type)) {
        return opening ? CellValue{"0x"} : CellValue{};
    }
    const bool quoted =
        tsql::isText(type) || tsql::isDate(type) || type == tsql::SqlType::UniqueIdentifier;
    if (!quoted) {
        return {};
    }
    return opening && tsql::isNational(type) ? "N'" : "'";
}

CellValue createParameters(const tsql::TypeSpec& type, const ColumnInfo& info) {
    if (tsql::isDecimal(type.type)) {
        return "precision,scale";
    }
    const bool sized = tsql::isText(type.type) || tsql::isBinary(type.type);
    const bool counts = sized && !info.isLong && type.type != tsql::SqlType::Timestamp;
    return counts ? CellValue{"max length"} : CellValue{};
}

// The widest that each type can be.
tsql::TypeSpec widest(tsql::SqlType type) {
    constexpr int kBytes = 8000;
    constexpr int kWideCharacters = 4000;
    constexpr int kDigits = 18;
    if (tsql::isDecimal(type)) {
        return {type, 0, kDigits, 0};
    }
    switch (type) {
        case tsql::SqlType::Char:
        case tsql::SqlType::VarChar:
        case tsql::SqlType::Binary:
        case tsql::SqlType::VarBinary:
            return {type, kBytes};
        case tsql::SqlType::NChar:
        case tsql::SqlType::NVarChar:
            return {type, kWideCharacters};
        default:
            return {type};
    }
}

void addType(SchemaRows& rows, const tsql::TypeSpec& type, bool bestMatch) {
    constexpr std::int64_t kAllExceptLike = 3;
    constexpr std::int64_t kSearchable = 4;
    const ColumnInfo info = engine::typeInfo(type);
    const bool number = tsql::isNumber(type.type);
    const bool digits = number && info.precision != 255;
    const CellValue maximumScale = tsql::isDecimal(type.type) ? whole(info.precision) : CellValue{};
    const CellValue minimumScale = tsql::isDecimal(type.type) ? whole(0) : CellValue{};
    rows.add({{"TYPE_NAME", tsql::typeName(type.type)},
              {"DATA_TYPE", whole(static_cast<std::int64_t>(generalType(info.type)))},
              {"COLUMN_SIZE", whole(digits ? info.precision : info.definedSize)},
              {"LITERAL_PREFIX", literalSign(type.type, true)},
              {"LITERAL_SUFFIX", literalSign(type.type, false)},
              {"CREATE_PARAMS", createParameters(type, info)},
              {"IS_NULLABLE", boolean(type.type != tsql::SqlType::Timestamp)},
              {"CASE_SENSITIVE", boolean(false)},
              {"SEARCHABLE", whole(tsql::isText(type.type) ? kSearchable : kAllExceptLike)},
              {"UNSIGNED_ATTRIBUTE",
               number ? boolean(type.type == tsql::SqlType::TinyInt) : CellValue{}},
              {"FIXED_PREC_SCALE", boolean(tsql::isMoney(type.type))},
              {"AUTO_UNIQUE_VALUE", boolean(false)},
              {"LOCAL_TYPE_NAME", tsql::typeName(type.type)},
              {"MINIMUM_SCALE", minimumScale},
              {"MAXIMUM_SCALE", maximumScale},
              {"IS_LONG", boolean(info.isLong)},
              {"BEST_MATCH", boolean(bestMatch)},
              {"IS_FIXEDLENGTH", boolean(info.fixedLength)}});
}

void addTypes(SchemaRows& rows) {
    std::vector<tsql::TypeSpec> types;
    for (int i = 0; i <= static_cast<int>(tsql::SqlType::UniqueIdentifier); ++i) {
        types.push_back(widest(static_cast<tsql::SqlType>(i)));
    }
    const auto code = [](const tsql::TypeSpec& type) {
        return generalType(engine::typeInfo(type).type);
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
