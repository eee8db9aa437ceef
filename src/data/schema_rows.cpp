#include "data/schema_rows.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/unicode.hpp"
#include "data/cell_value.hpp"
#include "data/failures.hpp"
#include "data/value_type.hpp"

namespace kap::ado {
namespace {

using enum DataTypeEnum;

struct Shape {
    SchemaEnum kind;
    std::vector<std::pair<const char*, DataTypeEnum>> columns;
    std::vector<std::string> restrictions;
};

const std::vector<Shape>& shapes() {
    static const std::vector<Shape> all = {
        {SchemaEnum::adSchemaTables,
         {{"TABLE_CATALOG", adWChar},
          {"TABLE_SCHEMA", adWChar},
          {"TABLE_NAME", adWChar},
          {"TABLE_TYPE", adWChar},
          {"TABLE_GUID", adGUID},
          {"DESCRIPTION", adWChar},
          {"TABLE_PROPID", adUnsignedInt},
          {"DATE_CREATED", adDate},
          {"DATE_MODIFIED", adDate}},
         {"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME", "TABLE_TYPE"}},
        {SchemaEnum::adSchemaColumns,
         {{"TABLE_CATALOG", adWChar},
          {"TABLE_SCHEMA", adWChar},
          {"TABLE_NAME", adWChar},
          {"COLUMN_NAME", adWChar},
          {"COLUMN_GUID", adGUID},
          {"COLUMN_PROPID", adUnsignedInt},
          {"ORDINAL_POSITION", adUnsignedInt},
          {"COLUMN_HASDEFAULT", adBoolean},
          {"COLUMN_DEFAULT", adWChar},
          {"COLUMN_FLAGS", adUnsignedInt},
          {"IS_NULLABLE", adBoolean},
          {"DATA_TYPE", adUnsignedSmallInt},
          {"TYPE_GUID", adGUID},
          {"CHARACTER_MAXIMUM_LENGTH", adUnsignedInt},
          {"CHARACTER_OCTET_LENGTH", adUnsignedInt},
          {"NUMERIC_PRECISION", adUnsignedSmallInt},
          {"NUMERIC_SCALE", adSmallInt},
          {"DATETIME_PRECISION", adUnsignedInt},
          {"CHARACTER_SET_CATALOG", adWChar},
          {"CHARACTER_SET_SCHEMA", adWChar},
          {"CHARACTER_SET_NAME", adWChar},
          {"COLLATION_CATALOG", adWChar},
          {"COLLATION_SCHEMA", adWChar},
          {"COLLATION_NAME", adWChar},
          {"DOMAIN_CATALOG", adWChar},
          {"DOMAIN_SCHEMA", adWChar},
          {"DOMAIN_NAME", adWChar},
          {"DESCRIPTION", adWChar}},
         {"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME", "COLUMN_NAME"}},
        {SchemaEnum::adSchemaIndexes,
         {{"TABLE_CATALOG", adWChar},
          {"TABLE_SCHEMA", adWChar},
          {"TABLE_NAME", adWChar},
          {"INDEX_CATALOG", adWChar},
          {"INDEX_SCHEMA", adWChar},
          {"INDEX_NAME", adWChar},
          {"PRIMARY_KEY", adBoolean},
          {"UNIQUE", adBoolean},
          {"CLUSTERED", adBoolean},
          {"TYPE", adUnsignedSmallInt},
          {"FILL_FACTOR", adInteger},
          {"INITIAL_SIZE", adInteger},
          {"NULLS", adInteger},
          {"SORT_BOOKMARKS", adBoolean},
          {"AUTO_UPDATE", adBoolean},
          {"NULL_COLLATION", adInteger},
          {"ORDINAL_POSITION", adUnsignedInt},
          {"COLUMN_NAME", adWChar},
          {"COLUMN_GUID", adGUID},
          {"COLUMN_PROPID", adUnsignedInt},
          {"COLLATION", adSmallInt},
          {"CARDINALITY", adBigInt},
          {"PAGES", adInteger},
          {"FILTER_CONDITION", adWChar},
          {"INTEGRATED", adBoolean}},
         {"TABLE_CATALOG", "TABLE_SCHEMA", "INDEX_NAME", "TYPE", "TABLE_NAME"}},
        {SchemaEnum::adSchemaPrimaryKeys,
         {{"TABLE_CATALOG", adWChar},
          {"TABLE_SCHEMA", adWChar},
          {"TABLE_NAME", adWChar},
          {"COLUMN_NAME", adWChar},
          {"COLUMN_GUID", adGUID},
          {"COLUMN_PROPID", adUnsignedInt},
          {"ORDINAL", adUnsignedInt},
          {"PK_NAME", adWChar}},
         {"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME"}},
        {SchemaEnum::adSchemaProviderTypes,
         {{"TYPE_NAME", adWChar},
          {"DATA_TYPE", adUnsignedSmallInt},
          {"COLUMN_SIZE", adUnsignedInt},
          {"LITERAL_PREFIX", adWChar},
          {"LITERAL_SUFFIX", adWChar},
          {"CREATE_PARAMS", adWChar},
          {"IS_NULLABLE", adBoolean},
          {"CASE_SENSITIVE", adBoolean},
          {"SEARCHABLE", adUnsignedInt},
          {"UNSIGNED_ATTRIBUTE", adBoolean},
          {"FIXED_PREC_SCALE", adBoolean},
          {"AUTO_UNIQUE_VALUE", adBoolean},
          {"LOCAL_TYPE_NAME", adWChar},
          {"MINIMUM_SCALE", adSmallInt},
          {"MAXIMUM_SCALE", adSmallInt},
          {"GUID", adGUID},
          {"TYPELIB", adWChar},
          {"VERSION", adWChar},
          {"IS_LONG", adBoolean},
          {"BEST_MATCH", adBoolean},
          {"IS_FIXEDLENGTH", adBoolean}},
         {"DATA_TYPE", "BEST_MATCH"}}};
    return all;
}

const Shape& shapeOf(SchemaEnum kind) {
    const auto found = std::ranges::find(shapes(), kind, &Shape::kind);
    if (found == shapes().end()) {
        fail::notAvailable(
            u"Object or provider is not capable of performing requested operation: there is no "
            u"such schema rowset.");
    }
    return *found;
}

ColumnInfo columnOf(const char* name, DataTypeEnum type) {
    constexpr std::int32_t kNameLength = 128;
    ColumnInfo column;
    column.name = name;
    column.type = type;
    column.fixedLength = widthOf(type) > 0;
    column.definedSize = column.fixedLength ? widthOf(type) : kNameLength;
    return column;
}

// The texts that restrictions are compared with.
std::string restrictable(const Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return plain::text(*number);
    }
    const auto* text = std::get_if<std::string>(&value);
    return text == nullptr ? std::string() : *text;
}

}  // namespace

const std::vector<std::string>& restrictionColumns(SchemaEnum kind) {
    return shapeOf(kind).restrictions;
}

SchemaRows::SchemaRows(SchemaEnum kind, const SchemaRestrictions& wanted)
    : kind_(kind), wanted_(wanted) {
    for (const auto& [name, type] : shapeOf(kind).columns) {
        result_.columns.push_back(columnOf(name, type));
    }
    result_.rows.resize(result_.columns.size());
}

bool SchemaRows::isWanted(const std::vector<Cell>& cells) const {
    const std::vector<std::string>& names = restrictionColumns(kind_);
    for (std::size_t i = 0; i < wanted_.size() && i < names.size(); ++i) {
        if (!wanted_[i]) {
            continue;
        }
        const auto cell = std::ranges::find(cells, names[i], &Cell::first);
        const std::string value = cell == cells.end() ? std::string() : restrictable(cell->second);
        if (!unicode::sameName(String(value), String(*wanted_[i]))) {
            return false;
        }
    }
    return true;
}

void SchemaRows::add(const std::vector<Cell>& cells) {
    if (!isWanted(cells)) {
        return;
    }
    for (std::size_t i = 0; i < result_.columns.size(); ++i) {
        const auto cell =
            std::ranges::find(cells, std::string_view(result_.columns[i].name), &Cell::first);
        append(result_.rows[i], cell == cells.end() ? Value{} : cell->second);
    }
}

Value schemaNumber(std::int64_t value) {
    return value;
}

Value schemaFlag(bool value) {
    return schemaNumber(value ? 1 : 0);
}

Value schemaText(std::string text) {
    return text.empty() ? Value{} : Value{std::move(text)};
}

DataTypeEnum schemaType(DataTypeEnum type) {
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

}  // namespace kap::ado
