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

// Asks one catalogue function after the other and hands its rows over.
class SchemaReader {
public:
    SchemaReader(OdbcConnection& connection, SchemaRows& rows, const SchemaRestrictions& wanted,
                 std::chrono::seconds timeout)
        : connection_(connection), rows_(rows), wanted_(wanted), timeout_(timeout) {}

    void addTables() {
        constexpr std::size_t kTypePlace = 3;
        Handle statement = connection_.newStatement(timeout_);
        CatalogueName type(at(kTypePlace));
        Names names(*this, 2, true);
        check(SQLTablesW(statement.get(), names.catalog.text(), names.catalog.length(),
                         names.schema.text(), names.schema.length(), names.table.text(),
                         names.table.length(), type.text(), type.length()),
              statement);
        CatalogueRows found(connection_, std::move(statement));
        while (found.next()) {
            rows_.add({{"TABLE_CATALOG", schemaText(found.text(1))},
                       {"TABLE_SCHEMA", schemaText(found.text(2))},
                       {"TABLE_NAME", schemaText(found.text(3))},
                       {"TABLE_TYPE", schemaText(found.text(4))},
                       {"DESCRIPTION", schemaText(found.text(5))}});
        }
    }

    void addColumns() {
        constexpr std::size_t kColumnPlace = 3;
        Handle statement = connection_.newStatement(timeout_);
        CatalogueName column(at(kColumnPlace), true);
        Names names(*this, 2, true);
        names.table.orAny();
        column.orAny();
        check(SQLColumnsW(statement.get(), names.catalog.text(), names.catalog.length(),
                          names.schema.text(), names.schema.length(), names.table.text(),
                          names.table.length(), column.text(), column.length()),
              statement);
        CatalogueRows found(connection_, std::move(statement));
        while (found.next()) {
            rows_.add(columnCells(found));
        }
    }

    void addPrimaryKeys() {
        for (const auto& [catalog, schema, table] : tablesWanted(2)) {
            Handle statement = connection_.newStatement(timeout_);
            CatalogueName names[] = {CatalogueName(given(catalog)), CatalogueName(given(schema)),
                                     CatalogueName(table)};
            check(SQLPrimaryKeysW(statement.get(), names[0].text(), names[0].length(),
                                  names[1].text(), names[1].length(), names[2].text(),
                                  names[2].length()),
                  statement);
            CatalogueRows found(connection_, std::move(statement));
            while (found.next()) {
                rows_.add({{"TABLE_CATALOG", schemaText(found.text(1))},
                           {"TABLE_SCHEMA", schemaText(found.text(2))},
                           {"TABLE_NAME", schemaText(found.text(3))},
                           {"COLUMN_NAME", schemaText(found.text(4))},
                           {"ORDINAL", schemaNumber(found.number(5).value_or(0))},
                           {"PK_NAME", schemaText(found.text(6))}});
            }
        }
    }

    void addIndexes() {
        constexpr std::size_t kTablePlace = 4;
        for (const auto& [catalog, schema, table] : tablesWanted(kTablePlace)) {
            const std::string primary = primaryKeyName(catalog, schema, table);
            Handle statement = connection_.newStatement(timeout_);
            CatalogueName names[] = {CatalogueName(given(catalog)), CatalogueName(given(schema)),
                                     CatalogueName(table)};
            check(SQLStatisticsW(statement.get(), names[0].text(), names[0].length(),
                                 names[1].text(), names[1].length(), names[2].text(),
                                 names[2].length(), SQL_INDEX_ALL, SQL_QUICK),
                  statement);
            CatalogueRows found(connection_, std::move(statement));
            while (found.next()) {
                addIndex(found, primary);
            }
        }
    }

    void addTypes() {
        CatalogueRows found(connection_, typesInfo());
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
        Handle statement = connection_.newStatement(timeout_);
        const SQLRETURN code = SQLGetTypeInfoW(statement.get(), SQL_ALL_TYPES);
        const std::string text = connection_.dialect().typesQuery();
        if (!SQL_SUCCEEDED(code) && !text.empty()) {
            statement = connection_.newStatement(timeout_);
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
        return name ? std::optional(connection_.dialect().folded(*name)) : std::nullopt;
    }

    void check(SQLRETURN code, const Handle& statement) { connection_.check(code, statement); }

    // These functions take one table only: all are asked for in turn, unless it is given.
    [[nodiscard]] std::vector<Place> tablesWanted(std::size_t tablePlace) {
        if (const auto table = folded(tablePlace)) {
            return {{at(0).value_or(""), at(1).value_or(""), *table}};
        }
        Handle statement = connection_.newStatement(timeout_);
        Names names(*this, tablePlace, true);
        CatalogueName type(std::string("TABLE"));
        check(SQLTablesW(statement.get(), names.catalog.text(), names.catalog.length(),
                         names.schema.text(), names.schema.length(), names.table.text(),
                         names.table.length(), type.text(), type.length()),
              statement);
        CatalogueRows found(connection_, std::move(statement));
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
        Handle statement = connection_.newStatement(timeout_);
        CatalogueName names[] = {CatalogueName(given(catalog)), CatalogueName(given(schema)),
                                 CatalogueName(table)};
        check(SQLPrimaryKeysW(statement.get(), names[0].text(), names[0].length(), names[1].text(),
                              names[1].length(), names[2].text(), names[2].length()),
              statement);
        CatalogueRows found(connection_, std::move(statement));
        return found.next() ? found.text(6) : std::string();
    }

    Cells columnCells(CatalogueRows& found) const {
        Cells cells = {{"TABLE_CATALOG", schemaText(found.text(1))},
                       {"TABLE_SCHEMA", schemaText(found.text(2))},
                       {"TABLE_NAME", schemaText(found.text(3))},
                       {"COLUMN_NAME", schemaText(found.text(4))}};
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
        connection_.dialect().describe(type, info);
        cells.emplace_back("ORDINAL_POSITION", schemaNumber(ordinal));
        cells.emplace_back("COLUMN_HASDEFAULT", schemaFlag(!defaultValue.empty()));
        cells.emplace_back("COLUMN_DEFAULT", schemaText(defaultValue));
        cells.emplace_back("COLUMN_FLAGS", schemaNumber(flagsOf(info, type, nullable)));
        cells.emplace_back("IS_NULLABLE", schemaFlag(nullable));
        cells.emplace_back("DATA_TYPE",
                           schemaNumber(static_cast<std::int64_t>(schemaType(info.type))));
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
            const bool doubled = schemaType(info.type) == DataTypeEnum::adWChar;
            const std::int64_t size = info.definedSize;
            cells.emplace_back("CHARACTER_MAXIMUM_LENGTH", schemaNumber(size));
            cells.emplace_back("CHARACTER_OCTET_LENGTH", schemaNumber(doubled ? size * 2 : size));
        } else if (info.type == DataTypeEnum::adNumeric) {
            cells.emplace_back("NUMERIC_PRECISION", schemaNumber(info.precision));
            cells.emplace_back("NUMERIC_SCALE", schemaNumber(info.numericScale));
        } else if (info.type == DataTypeEnum::adDBTimeStamp) {
            cells.emplace_back("DATETIME_PRECISION", schemaNumber(info.numericScale));
        } else if (info.precision != 255 && info.type != DataTypeEnum::adDBDate &&
                   info.type != DataTypeEnum::adDBTime) {
            cells.emplace_back("NUMERIC_PRECISION", schemaNumber(info.precision));
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
        rows_.add({{"TABLE_CATALOG", schemaText(catalog)},
                   {"TABLE_SCHEMA", schemaText(schema)},
                   {"TABLE_NAME", schemaText(table)},
                   {"INDEX_SCHEMA", schemaText(schema)},
                   {"INDEX_NAME", schemaText(name)},
                   {"PRIMARY_KEY", schemaFlag(name == primary)},
                   {"UNIQUE", schemaFlag(!many)},
                   {"CLUSTERED", schemaFlag(type == SQL_INDEX_CLUSTERED)},
                   {"TYPE", schemaNumber(kTree)},
                   {"AUTO_UPDATE", schemaFlag(true)},
                   {"ORDINAL_POSITION", schemaNumber(ordinal)},
                   {"COLUMN_NAME", schemaText(column)},
                   {"COLLATION", schemaNumber(descending ? 2 : 1)},
                   {"INTEGRATED", schemaFlag(false)}});
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
        describeType(type, 0, connection_.dialect().wideTexts(), info);
        return {{"TYPE_NAME", schemaText(type.name)},
                {"DATA_TYPE", schemaNumber(static_cast<std::int64_t>(schemaType(info.type)))},
                {"COLUMN_SIZE", schemaNumber(static_cast<std::int64_t>(type.size))},
                {"LITERAL_PREFIX", schemaText(prefix)},
                {"LITERAL_SUFFIX", schemaText(suffix)},
                {"CREATE_PARAMS", schemaText(parameters)},
                {"IS_NULLABLE", schemaFlag(nullable != SQL_NO_NULLS)},
                {"CASE_SENSITIVE", schemaFlag(caseSensitive != 0)},
                // The data-access objects count the ways of searching from 1.
                {"SEARCHABLE", schemaNumber(searchable + 1)},
                {"UNSIGNED_ATTRIBUTE", isUnsigned ? schemaFlag(*isUnsigned != 0) : Value{}},
                {"FIXED_PREC_SCALE", schemaFlag(money != 0)},
                {"AUTO_UNIQUE_VALUE", schemaFlag(automatic != 0)},
                {"IS_LONG", schemaFlag(info.isLong)},
                {"BEST_MATCH", schemaFlag(true)},
                {"IS_FIXEDLENGTH", schemaFlag(info.fixedLength)}};
    }

    OdbcConnection& connection_;
    SchemaRows& rows_;
    const SchemaRestrictions& wanted_;
    std::chrono::seconds timeout_;
};

}  // namespace

Result schemaRowset(OdbcConnection& connection, SchemaEnum kind, const SchemaRestrictions& wanted,
                    std::chrono::seconds timeout) {
    SchemaRows rows(kind, wanted);
    SchemaReader reader(connection, rows, wanted, timeout);
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
