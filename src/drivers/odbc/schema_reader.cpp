#include "drivers/odbc/schema_reader.hpp"

#include <string>
#include <utility>
#include <vector>

#include "base/ascii.hpp"
#include "data/schema_rows.hpp"
#include "drivers/odbc/catalogue_call.hpp"
#include "drivers/odbc/column_types.hpp"

namespace kap::ado::odbc {
namespace {

using Cells = std::vector<SchemaRows::Cell>;

CellValue whole(std::int64_t value) {
    return value;
}

CellValue boolean(bool value) {
    return whole(value ? 1 : 0);
}

CellValue textOrNull(std::string text) {
    return text.empty() ? CellValue{} : CellValue{std::move(text)};
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

// Asks one catalogue function after the other and hands its rows over.
class SchemaReader {
public:
    SchemaReader(Link& link, SchemaRows& rows, const SchemaRestrictions& wanted,
                 std::chrono::seconds timeout)
        : link_(link), rows_(rows), wanted_(wanted), timeout_(timeout) {}

    void addTables() {
        constexpr std::size_t kTypePlace = 3;
        Handle statement = link_.newStatement(timeout_);
        CatalogueName type(at(kTypePlace));
        Names names(*this, 2, true);
        check(SQLTablesW(statement.get(), names.catalog.text(), names.catalog.length(),
                         names.schema.text(), names.schema.length(), names.table.text(),
                         names.table.length(), type.text(), type.length()),
              statement);
        CatalogueRows found(link_, std::move(statement));
        while (found.next()) {
            rows_.add({{"TABLE_CATALOG", textOrNull(found.text(1))},
                       {"TABLE_SCHEMA", textOrNull(found.text(2))},
                       {"TABLE_NAME", textOrNull(found.text(3))},
                       {"TABLE_TYPE", textOrNull(found.text(4))},
                       {"DESCRIPTION", textOrNull(found.text(5))}});
        }
    }

    void addColumns() {
        constexpr std::size_t kColumnPlace = 3;
        Handle statement = link_.newStatement(timeout_);
        CatalogueName column(at(kColumnPlace), true);
        Names names(*this, 2, true);
        names.table.orAny();
        column.orAny();
        check(SQLColumnsW(statement.get(), names.catalog.text(), names.catalog.length(),
                          names.schema.text(), names.schema.length(), names.table.text(),
                          names.table.length(), column.text(), column.length()),
              statement);
        CatalogueRows found(link_, std::move(statement));
        while (found.next()) {
            rows_.add(columnCells(found));
        }
    }

    void addPrimaryKeys() {
        for (const auto& [catalog, schema, table] : tablesWanted(2)) {
            Handle statement = link_.newStatement(timeout_);
            CatalogueName names[] = {CatalogueName(given(catalog)), CatalogueName(given(schema)),
                                     CatalogueName(table)};
            check(SQLPrimaryKeysW(statement.get(), names[0].text(), names[0].length(),
                                  names[1].text(), names[1].length(), names[2].text(),
                                  names[2].length()),
                  statement);
            CatalogueRows found(link_, std::move(statement));
            while (found.next()) {
                rows_.add({{"TABLE_CATALOG", textOrNull(found.text(1))},
                           {"TABLE_SCHEMA", textOrNull(found.text(2))},
                           {"TABLE_NAME", textOrNull(found.text(3))},
                           {"COLUMN_NAME", textOrNull(found.text(4))},
                           {"ORDINAL", whole(found.number(5).value_or(0))},
                           {"PK_NAME", textOrNull(found.text(6))}});
            }
        }
    }

    void addIndexes() {
        constexpr std::size_t kTablePlace = 4;
        for (const auto& [catalog, schema, table] : tablesWanted(kTablePlace)) {
            const std::string primary = primaryKeyName(catalog, schema, table);
            Handle statement = link_.newStatement(timeout_);
            CatalogueName names[] = {CatalogueName(given(catalog)), CatalogueName(given(schema)),
                                     CatalogueName(table)};
            check(SQLStatisticsW(statement.get(), names[0].text(), names[0].length(),
                                 names[1].text(), names[1].length(), names[2].text(),
                                 names[2].length(), SQL_INDEX_ALL, SQL_QUICK),
                  statement);
            CatalogueRows found(link_, std::move(statement));
            while (found.next()) {
                addIndex(found, primary);
            }
        }
    }

    void addTypes() {
        CatalogueRows found(link_, typesInfo());
        while (found.next()) {
            rows_.add(typeCells(found));
        }
    }

private:
    struct Place {
        std::string catalog;
        std::string schema;
        std::string table;
    };

    // The restrictions that every catalogue function takes.
    struct Names {
        CatalogueName catalog;
        CatalogueName schema;
        CatalogueName table;
        Names(const SchemaReader& reader, std::size_t tablePlace, bool pattern)
            : catalog(reader.at(0)),
              schema(reader.at(1), pattern),
              table(reader.folded(tablePlace), pattern) {}
    };

    static std::optional<std::string> given(const std::string& part) {
        return part.empty() ? std::nullopt : std::optional(part);
    }

    [[nodiscard]] std::optional<std::string> at(std::size_t place) const {
        return place < wanted_.size() ? wanted_[place] : std::nullopt;
    }

    [[nodiscard]] Handle typesInfo() {
        Handle statement = link_.newStatement(timeout_);
        const SQLRETURN code = SQLGetTypeInfoW(statement.get(), SQL_ALL_TYPES);
        const std::string text = link_.abilities().server->typesQuery();
        if (!SQL_SUCCEEDED(code) && !text.empty()) {
            statement = link_.newStatement(timeout_);
            const std::u16string units = String(text).units();
            check(
                SQLExecDirectW(statement.get(), wide(units), static_cast<SQLINTEGER>(units.size())),
                statement);
            return statement;
        }
        check(code, statement);
        return statement;
    }

    // Programs name a table as they write it in texts.
    [[nodiscard]] std::optional<std::string> folded(std::size_t place) const {
        const auto name = at(place);
        return name ? std::optional(link_.abilities().folded(*name)) : std::nullopt;
    }

    void check(SQLRETURN code, const Handle& statement) { link_.check(code, statement); }

    // These functions take one table only: all are asked for in turn, unless it is given.
    [[nodiscard]] std::vector<Place> tablesWanted(std::size_t tablePlace) {
        if (const auto table = folded(tablePlace)) {
            return {{at(0).value_or(""), at(1).value_or(""), *table}};
        }
        Handle statement = link_.newStatement(timeout_);
        Names names(*this, tablePlace, true);
        CatalogueName type(std::string("TABLE"));
        check(SQLTablesW(statement.get(), names.catalog.text(), names.catalog.length(),
                         names.schema.text(), names.schema.length(), names.table.text(),
                         names.table.length(), type.text(), type.length()),
              statement);
        CatalogueRows found(link_, std::move(statement));
        std::vector<Place> places;
        while (found.next()) {
            Place place;
            place.catalog = found.text(1);
            place.schema = found.text(2);
            place.table = found.text(3);
            places.push_back(std::move(place));
        }
        return places;
    }

    [[nodiscard]] std::string primaryKeyName(const std::string& catalog, const std::string& schema,
                                             const std::string& table) {
        Handle statement = link_.newStatement(timeout_);
        CatalogueName names[] = {CatalogueName(given(catalog)), CatalogueName(given(schema)),
                                 CatalogueName(table)};
        check(SQLPrimaryKeysW(statement.get(), names[0].text(), names[0].length(), names[1].text(),
                              names[1].length(), names[2].text(), names[2].length()),
              statement);
        CatalogueRows found(link_, std::move(statement));
        return found.next() ? found.text(6) : std::string();
    }

    Cells columnCells(CatalogueRows& found) const {
        Cells cells = {{"TABLE_CATALOG", textOrNull(found.text(1))},
                       {"TABLE_SCHEMA", textOrNull(found.text(2))},
                       {"TABLE_NAME", textOrNull(found.text(3))},
                       {"COLUMN_NAME", textOrNull(found.text(4))}};
        AnnouncedType type;
        type.code = static_cast<SQLSMALLINT>(found.number(5).value_or(SQL_VARCHAR));
        type.name = found.text(6);
        type.size = static_cast<SQLULEN>(found.number(7).value_or(0));
        type.bytes = static_cast<SQLLEN>(found.number(8).value_or(0));
        type.decimals = static_cast<SQLSMALLINT>(found.number(9).value_or(0));
        const bool nullable = found.number(11).value_or(SQL_NULLABLE) != SQL_NO_NULLS;
        const std::string defaultValue = found.text(13);
        const std::int64_t ordinal = found.number(17).value_or(0);
        ColumnInfo info;
        describeType(type, link_.abilities().server->inventedSize(), info);
        cells.emplace_back("ORDINAL_POSITION", whole(ordinal));
        cells.emplace_back("COLUMN_HASDEFAULT", boolean(!defaultValue.empty()));
        cells.emplace_back("COLUMN_DEFAULT", textOrNull(defaultValue));
        cells.emplace_back("COLUMN_FLAGS", whole(flagsOf(info, type, nullable)));
        cells.emplace_back("IS_NULLABLE", boolean(nullable));
        cells.emplace_back("DATA_TYPE", whole(static_cast<std::int64_t>(generalType(info.type))));
        addSizes(cells, info);
        return cells;
    }

    static std::int64_t flagsOf(const ColumnInfo& info, const AnnouncedType& type, bool nullable) {
        const auto bit = [](bool set, FieldAttributeEnum flag) {
            return set ? static_cast<std::int64_t>(flag) : 0;
        };
        const bool identity = asciiLower(type.name).find("identity") != std::string::npos;
        return bit(!identity && !info.rowVersion, FieldAttributeEnum::adFldUnknownUpdatable) |
               bit(info.fixedLength, FieldAttributeEnum::adFldFixed) |
               bit(nullable, FieldAttributeEnum::adFldIsNullable) |
               bit(nullable, FieldAttributeEnum::adFldMayBeNull) |
               bit(info.isLong, FieldAttributeEnum::adFldLong) |
               bit(info.rowVersion, FieldAttributeEnum::adFldRowVersion);
    }

    static void addSizes(Cells& cells, const ColumnInfo& info) {
        const Storage storage = storageOf(info.type);
        const bool text = storage == Storage::Text && info.type != DataTypeEnum::adGUID;
        if (text || storage == Storage::Binary) {
            const bool doubled = generalType(info.type) == DataTypeEnum::adWChar;
            const std::int64_t size = info.definedSize;
            cells.emplace_back("CHARACTER_MAXIMUM_LENGTH", whole(size));
            cells.emplace_back("CHARACTER_OCTET_LENGTH", whole(doubled ? size * 2 : size));
        } else if (info.type == DataTypeEnum::adNumeric) {
            cells.emplace_back("NUMERIC_PRECISION", whole(info.precision));
            cells.emplace_back("NUMERIC_SCALE", whole(info.numericScale));
        } else if (info.type == DataTypeEnum::adDBTimeStamp) {
            cells.emplace_back("DATETIME_PRECISION", whole(info.numericScale));
        } else if (info.precision != 255 && info.type != DataTypeEnum::adDBDate &&
                   info.type != DataTypeEnum::adDBTime) {
            cells.emplace_back("NUMERIC_PRECISION", whole(info.precision));
        }
    }

    void addIndex(CatalogueRows& found, const std::string& primary) {
        const std::string catalog = found.text(1);
        const std::string schema = found.text(2);
        const std::string table = found.text(3);
        const bool many = found.number(4).value_or(SQL_TRUE) != SQL_FALSE;
        const std::string name = found.text(6);
        const std::int64_t type = found.number(7).value_or(SQL_TABLE_STAT);
        if (type == SQL_TABLE_STAT) {
            return;
        }
        const std::int64_t ordinal = found.number(8).value_or(0);
        const std::string column = found.text(9);
        const bool descending = found.text(10) == "D";
        constexpr std::int64_t kTree = 1;
        rows_.add({{"TABLE_CATALOG", textOrNull(catalog)},
                   {"TABLE_SCHEMA", textOrNull(schema)},
                   {"TABLE_NAME", textOrNull(table)},
                   {"INDEX_SCHEMA", textOrNull(schema)},
                   {"INDEX_NAME", textOrNull(name)},
                   {"PRIMARY_KEY", boolean(name == primary)},
                   {"UNIQUE", boolean(!many)},
                   {"CLUSTERED", boolean(type == SQL_INDEX_CLUSTERED)},
                   {"TYPE", whole(kTree)},
                   {"AUTO_UPDATE", boolean(true)},
                   {"ORDINAL_POSITION", whole(ordinal)},
                   {"COLUMN_NAME", textOrNull(column)},
                   {"COLLATION", whole(descending ? 2 : 1)},
                   {"INTEGRATED", boolean(false)}});
    }

    Cells typeCells(CatalogueRows& found) const {
        AnnouncedType type;
        type.name = found.text(1);
        type.code = static_cast<SQLSMALLINT>(found.number(2).value_or(SQL_VARCHAR));
        type.size = static_cast<SQLULEN>(found.number(3).value_or(0));
        const std::string prefix = found.text(4);
        const std::string suffix = found.text(5);
        const std::string parameters = found.text(6);
        const std::int64_t nullable = found.number(7).value_or(SQL_NULLABLE);
        const std::int64_t caseSensitive = found.number(8).value_or(0);
        const std::int64_t searchable = found.number(9).value_or(SQL_SEARCHABLE);
        const auto isUnsigned = found.number(10);
        const std::int64_t money = found.number(11).value_or(0);
        const std::int64_t automatic = found.number(12).value_or(0);
        ColumnInfo info;
        describeType(type, 0, info);
        return {{"TYPE_NAME", textOrNull(type.name)},
                {"DATA_TYPE", whole(static_cast<std::int64_t>(generalType(info.type)))},
                {"COLUMN_SIZE", whole(static_cast<std::int64_t>(type.size))},
                {"LITERAL_PREFIX", textOrNull(prefix)},
                {"LITERAL_SUFFIX", textOrNull(suffix)},
                {"CREATE_PARAMS", textOrNull(parameters)},
                {"IS_NULLABLE", boolean(nullable != SQL_NO_NULLS)},
                {"CASE_SENSITIVE", boolean(caseSensitive != 0)},
                // The data-access objects count the ways of searching from 1.
                {"SEARCHABLE", whole(searchable + 1)},
                {"UNSIGNED_ATTRIBUTE", isUnsigned ? boolean(*isUnsigned != 0) : CellValue{}},
                {"FIXED_PREC_SCALE", boolean(money != 0)},
                {"AUTO_UNIQUE_VALUE", boolean(automatic != 0)},
                {"IS_LONG", boolean(info.isLong)},
                {"BEST_MATCH", boolean(true)},
                {"IS_FIXEDLENGTH", boolean(info.fixedLength)}};
    }

    Link& link_;
    SchemaRows& rows_;
    const SchemaRestrictions& wanted_;
    std::chrono::seconds timeout_;
};

}  // namespace

Result schemaRowset(Link& link, SchemaEnum kind, const SchemaRestrictions& wanted,
                    std::chrono::seconds timeout) {
    SchemaRows rows(kind, wanted);
    SchemaReader reader(link, rows, wanted, timeout);
    switch (kind) {
        case SchemaEnum::adSchemaTables:
            reader.addTables();
            break;
        case SchemaEnum::adSchemaColumns:
            reader.addColumns();
            break;
        case SchemaEnum::adSchemaPrimaryKeys:
            reader.addPrimaryKeys();
            break;
        case SchemaEnum::adSchemaIndexes:
            reader.addIndexes();
            break;
        case SchemaEnum::adSchemaProviderTypes:
            reader.addTypes();
            break;
        default:  // has been refused
            break;
    }
    return rows.take();
}

}  // namespace kap::ado::odbc
