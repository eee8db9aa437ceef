#include "migrate/copied_tables.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/decimal.hpp>

#include "base/ascii.hpp"

namespace kap::migrate {
namespace {

bool has(const ado::Field& field, ado::FieldAttributeEnum bit) {
    return (field.Attributes() & static_cast<std::int32_t>(bit)) != 0;
}

// A database may have tables of the same name that are not the one meant.
bool isOf(const Ref<ado::Recordset>& rows, const std::string& table) {
    return equalsIgnoringCase(textOf(rows, u"TABLE_NAME"), table);
}

Ref<ado::Recordset> schemaOf(ado::Connection& connection, ado::SchemaEnum kind,
                             const std::string& table) {
    const bool indexes = kind == ado::SchemaEnum::adSchemaIndexes;
    std::vector<Variant> wanted(indexes ? 4 : 2);
    wanted.emplace_back(table);
    return connection.OpenSchema(kind, Variant(Array::ofVariants(wanted)));
}

// The embedded database tells amounts as it stores them, without their point.
std::string withPoint(const ado::Connection& connection, const CopiedColumn& column,
                      const std::string& text) {
    constexpr int kMoneyScale = 4;
    const bool money = column.type == ado::DataTypeEnum::adCurrency;
    const bool decimal = column.type == ado::DataTypeEnum::adNumeric;
    const auto stored = Decimal::parse(text);
    if (connection.Provider() != u"KapLocal" || !(money || decimal) || !stored) {
        return text;
    }
    const auto digits = stored->scaledTo(0);
    return digits ? Decimal(*digits, money ? kMoneyScale : column.scale).plainText() : text;
}

}  // namespace

Ref<ado::Recordset> opened(ado::Connection& connection, const std::string& query) {
    auto rows = make<ado::Recordset>();
    rows->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    rows->Open(Variant(query), Variant(Ref<ado::Connection>(&connection)));
    return rows;
}

std::string textOf(const Ref<ado::Recordset>& rows, const Variant& column) {
    const Variant value = rows->Fields()->Item(column)->Value();
    return value.isNull() ? std::string() : convert::toString(value).utf8();
}

std::vector<CopiedColumn> columnsOf(const ado::Recordset& rows) {
    const auto fields = rows.Fields();
    std::vector<CopiedColumn> columns;
    columns.reserve(static_cast<std::size_t>(fields->Count()));
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        const auto field = fields->Item(i);
        CopiedColumn column;
        column.name = field->Name().utf8();
        column.type = field->Type();
        column.size = field->DefinedSize();
        column.precision = field->Precision();
        column.scale = field->NumericScale();
        column.nullable = has(*field, ado::FieldAttributeEnum::adFldIsNullable);
        column.isLong = has(*field, ado::FieldAttributeEnum::adFldLong);
        column.rowVersion = has(*field, ado::FieldAttributeEnum::adFldRowVersion);
        // What the database sets itself and is no row version.
        column.identity =
            !column.rowVersion && !has(*field, ado::FieldAttributeEnum::adFldUnknownUpdatable);
        columns.push_back(std::move(column));
    }
    return columns;
}

std::vector<std::string> keyOf(ado::Connection& connection, const std::string& table) {
    const auto keys =
        connection.OpenSchema(ado::SchemaEnum::adSchemaPrimaryKeys,
                              Variant(Array::ofVariants({Variant(), Variant(), Variant(table)})));
    std::vector<std::pair<std::int64_t, std::string>> parts;
    for (; !keys->Eof(); keys->MoveNext()) {
        if (equalsIgnoringCase(textOf(keys, u"TABLE_NAME"), table)) {
            parts.emplace_back(convert::toLong(keys->Fields()->Item(u"ORDINAL")->Value()),
                               textOf(keys, u"COLUMN_NAME"));
        }
    }
    std::ranges::sort(parts);
    std::vector<std::string> names;
    names.reserve(parts.size());
    for (auto& [ordinal, name] : parts) {
        names.push_back(std::move(name));
    }
    return names;
}

std::string joined(const std::vector<std::string>& parts) {
    std::string all;
    for (const std::string& part : parts) {
        all += (all.empty() ? "" : ", ") + part;
    }
    return all;
}

std::vector<std::string> tablesOf(ado::Connection& connection) {
    const auto found = connection.OpenSchema(
        ado::SchemaEnum::adSchemaTables,
        Variant(Array::ofVariants({Variant(), Variant(), Variant(), Variant(u"TABLE")})));
    std::vector<std::string> tables;
    for (; !found->Eof(); found->MoveNext()) {
        std::string name = textOf(found, u"TABLE_NAME");
        if (!equalsIgnoringCase(name, kCopyNotes)) {
            tables.push_back(std::move(name));
        }
    }
    return tables;
}

std::vector<CopiedColumn> columnsOf(ado::Connection& connection, const CopyDialect& dialect,
                                    const std::string& table) {
    std::vector<CopiedColumn> columns =
        columnsOf(*opened(connection, "SELECT * FROM " + dialect.quoted(table) + " WHERE 1 = 0"));
    const auto found = schemaOf(connection, ado::SchemaEnum::adSchemaColumns, table);
    for (; !found->Eof(); found->MoveNext()) {
        const std::string name = textOf(found, u"COLUMN_NAME");
        const auto column = std::ranges::find(columns, name, &CopiedColumn::name);
        if (column != columns.end() && isOf(found, table) && !column->identity &&
            !column->rowVersion) {
            column->defaultValue = readDefault(textOf(found, u"COLUMN_DEFAULT"));
            column->defaultValue.text = withPoint(connection, *column, column->defaultValue.text);
        }
    }
    return columns;
}

std::vector<CopiedIndex> indexesOf(ado::Connection& connection, const std::string& table) {
    const auto isTrue = [](const Variant& value) {
        return !value.isNull() && convert::toBoolean(value);
    };
    std::vector<CopiedIndex> indexes;
    const auto found = schemaOf(connection, ado::SchemaEnum::adSchemaIndexes, table);
    for (; !found->Eof(); found->MoveNext()) {
        const auto fields = found->Fields();
        if (!isOf(found, table) || isTrue(fields->Item(u"PRIMARY_KEY")->Value())) {
            continue;
        }
        const std::string name = textOf(found, u"INDEX_NAME");
        if (indexes.empty() || indexes.back().name != name) {
            indexes.push_back({name, table, isTrue(fields->Item(u"UNIQUE")->Value()), {}});
        }
        indexes.back().parts.push_back(
            {textOf(found, u"COLUMN_NAME"), textOf(found, u"COLLATION") == "2"});
    }
    return indexes;
}

std::vector<CopiedForeignKey> foreignKeysOf(ado::Connection& connection,
                                            const CopyDialect& dialect) {
    // The places of the query's columns.
    constexpr std::int32_t kColumn = 2;
    constexpr std::int32_t kReferencedColumn = 4;
    const auto action = [](std::string text) {
        std::ranges::replace(text, '_', ' ');
        return text;
    };
    std::vector<CopiedForeignKey> keys;
    const auto found = opened(connection, dialect.foreignKeys());
    for (; !found->Eof(); found->MoveNext()) {
        const std::string name = textOf(found, 0);
        const std::string table = textOf(found, 1);
        if (keys.empty() || keys.back().name != name || keys.back().table != table) {
            keys.push_back({name,
                            table,
                            {},
                            textOf(found, 3),
                            {},
                            action(textOf(found, 5)),
                            action(textOf(found, 6))});
        }
        keys.back().columns.push_back(textOf(found, kColumn));
        const std::string referenced = textOf(found, kReferencedColumn);
        if (!referenced.empty()) {
            keys.back().referencedColumns.push_back(referenced);
        }
    }
    return keys;
}

}  // namespace kap::migrate
