#include "migrate/copied_tables.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "data/table_session.hpp"

namespace kap::migrate {
namespace {

bool has(const ado::Field& field, ado::FieldAttributeEnum bit) {
    return (field.Attributes() & static_cast<std::int32_t>(bit)) != 0;
}

bool isTrue(const Ref<ado::Recordset>& rows, std::int32_t column) {
    const Variant value = rows->Fields()->Item(column)->Value();
    return !value.isNull() && convert::toBoolean(value);
}

std::int64_t numberIn(const std::string& text, std::int64_t otherwise) {
    const auto number = plain::readWhole(text);
    return number ? *number : otherwise;
}

ado::ColumnDefinition columnOf(const ado::Field& field) {
    ado::ColumnDefinition column;
    column.name = field.Name().utf8();
    column.type = field.Type();
    column.size = field.DefinedSize();
    column.precision = field.Precision();
    column.scale = field.NumericScale();
    column.nullable = has(field, ado::FieldAttributeEnum::adFldIsNullable);
    column.isLong = has(field, ado::FieldAttributeEnum::adFldLong);
    column.rowVersion = has(field, ado::FieldAttributeEnum::adFldRowVersion);
    return column;
}

// What the catalogue says of a column beyond that; the places are those of
// ado::SqlDialect::columns.
void describe(ado::ColumnDefinition& column, const Ref<ado::Recordset>& facts) {
    column.declared = textOf(facts, 1);
    column.identity = isTrue(facts, 2);
    column.computed = textOf(facts, 3);
    column.persisted = isTrue(facts, 4);
    if (column.identity) {
        column.seed = numberIn(textOf(facts, 7), 1);
        column.increment = numberIn(textOf(facts, 8), 1);
    } else if (!column.rowVersion) {
        column.defaultName = textOf(facts, 5);
        column.defaultText = textOf(facts, 6);
        column.defaultValue = ado::readDefault(column.defaultText);
        // Elsewhere the cast would round it.
        const bool cast = equalsIgnoringCase(column.defaultText.substr(0, 4), "cast");
        if (cast && column.defaultValue.kind == ado::DefaultValue::Kind::Constant) {
            column.defaultText = "(" + column.defaultValue.text + ")";
        }
    }
}

CopiedIndex::Kind kindOf(const std::string& word) {
    return word == "PK"   ? CopiedIndex::Kind::PrimaryKey
           : word == "UQ" ? CopiedIndex::Kind::UniqueKey
                          : CopiedIndex::Kind::Index;
}

std::string action(std::string text) {
    std::ranges::replace(text, '_', ' ');
    return text;
}

}  // namespace

std::vector<std::string> CopiedIndex::columns() const {
    std::vector<std::string> names;
    names.reserve(parts.size());
    for (const Part& part : parts) {
        names.push_back(part.column);
    }
    return names;
}

const ado::SqlDialect& dialectOf(ado::Connection& connection) {
    return ado::TableSession::of(*connection.session()).dialect();
}

ado::Result answerOf(ado::Connection& connection, const std::string& query) {
    ado::Request request;
    request.text = query;
    ado::Reply reply;
    connection.run(request, reply);
    if (reply.results.empty()) {
        return {};
    }
    ado::Result answer = std::move(reply.results.front());
    if (answer.rest) {
        connection.reporting([&] { answer.rest->fetch(answer.rows); });
        answer.rest.reset();
    }
    return answer;
}

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

std::optional<std::int64_t> numberOf(ado::Connection& connection, const std::string& query) {
    const auto rows = opened(connection, query);
    return rows->Eof() ? std::nullopt : plain::readWhole(textOf(rows, 0));
}

std::string joined(const std::vector<std::string>& parts) {
    std::string all;
    for (const std::string& part : parts) {
        all += (all.empty() ? "" : ", ") + part;
    }
    return all;
}

std::vector<ado::ObjectName> otherTablesOf(ado::Connection& connection,
                                           const ado::SqlDialect& dialect) {
    std::vector<ado::ObjectName> names;
    const auto found = opened(connection, dialect.otherTables());
    for (; !found->Eof(); found->MoveNext()) {
        names.emplace_back(textOf(found, 1), textOf(found, 0));
    }
    return names;
}

std::vector<std::string> tablesOf(ado::Connection& connection, const ado::SqlDialect& dialect) {
    const std::vector<ado::ObjectName> others = otherTablesOf(connection, dialect);
    const auto found = connection.OpenSchema(
        ado::SchemaEnum::adSchemaTables,
        Variant(Array::ofVariants({Variant(), Variant(), Variant(), Variant(u"TABLE")})));
    std::vector<std::string> tables;
    for (; !found->Eof(); found->MoveNext()) {
        std::string name = textOf(found, u"TABLE_NAME");
        const std::string schema = textOf(found, u"TABLE_SCHEMA");
        const bool other = std::ranges::any_of(others, [&](const ado::ObjectName& each) {
            return each.name == name && each.schema == schema;
        });
        if (!equalsIgnoringCase(name, kCopyNotes) && !other) {
            tables.push_back(std::move(name));
        }
    }
    return tables;
}

std::vector<ado::ObjectName> allTablesOf(ado::Connection& connection,
                                         const ado::SqlDialect& dialect) {
    std::vector<ado::ObjectName> all;
    for (const std::string& name : tablesOf(connection, dialect)) {
        all.emplace_back(name);
    }
    const std::vector<ado::ObjectName> others = otherTablesOf(connection, dialect);
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

std::vector<ado::ColumnDefinition> columnsOf(ado::Connection& connection,
                                             const ado::SqlDialect& dialect,
                                             const ado::ObjectName& table) {
    const auto fields =
        opened(connection, "SELECT * FROM " + dialect.qualified(table) + " WHERE 1 = 0")->Fields();
    std::vector<ado::ColumnDefinition> columns;
    columns.reserve(static_cast<std::size_t>(fields->Count()));
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        columns.push_back(columnOf(*fields->Item(i)));
        columns.back().type = dialect.keptAs(columns.back().type);
    }
    const auto facts = opened(connection, dialect.columns(table));
    for (; !facts->Eof(); facts->MoveNext()) {
        const auto column = std::ranges::find_if(columns, [&](const ado::ColumnDefinition& each) {
            return equalsIgnoringCase(each.name, textOf(facts, 0));
        });
        if (column != columns.end()) {
            describe(*column, facts);
        }
    }
    return columns;
}

// The places of a row's columns are those of ado::SqlDialect::indexes.
std::vector<CopiedIndex> indexesOf(ado::Connection& connection, const ado::SqlDialect& dialect,
                                   const ado::ObjectName& table) {
    std::vector<CopiedIndex> indexes;
    const auto found = opened(connection, dialect.indexes(table));
    for (; !found->Eof(); found->MoveNext()) {
        const std::string name = textOf(found, 0);
        if (indexes.empty() || indexes.back().name != name) {
            CopiedIndex index;
            index.name = name;
            index.kind = kindOf(textOf(found, 1));
            index.unique = isTrue(found, 2);
            index.filter = textOf(found, 3);
            indexes.push_back(std::move(index));
        }
        const std::string column = textOf(found, 4);
        CopiedIndex& index = indexes.back();
        index.expressions = index.expressions || column.empty();
        if (isTrue(found, 6)) {
            index.carried.push_back(column);
        } else {
            index.parts.push_back({column, isTrue(found, 5)});
        }
    }
    return indexes;
}

std::vector<std::string> keyOf(ado::Connection& connection, const ado::SqlDialect& dialect,
                               const ado::ObjectName& table) {
    for (const CopiedIndex& index : indexesOf(connection, dialect, table)) {
        if (index.kind == CopiedIndex::Kind::PrimaryKey) {
            return index.columns();
        }
    }
    return {};
}

// The places of a row's columns are those of ado::SqlDialect::foreignKeys.
std::vector<CopiedForeignKey> foreignKeysOf(ado::Connection& connection,
                                            const ado::SqlDialect& dialect) {
    std::vector<CopiedForeignKey> keys;
    const auto found = opened(connection, dialect.foreignKeys());
    for (; !found->Eof(); found->MoveNext()) {
        const std::string name = textOf(found, 0);
        const ado::ObjectName table(textOf(found, 1), textOf(found, 8));
        if (keys.empty() || keys.back().name != name || !keys.back().table.isAlike(table)) {
            keys.push_back({name,
                            table,
                            {},
                            ado::ObjectName(textOf(found, 3), textOf(found, 9)),
                            {},
                            action(textOf(found, 5)),
                            action(textOf(found, 6)),
                            isTrue(found, 7)});
        }
        keys.back().columns.push_back(textOf(found, 2));
        keys.back().referencedColumns.push_back(textOf(found, 4));
    }
    return keys;
}

std::vector<CopiedProgram> programsOf(ado::Connection& connection, const ado::SqlDialect& dialect) {
    std::vector<CopiedProgram> programs;
    const auto found = opened(connection, dialect.programs());
    for (; !found->Eof(); found->MoveNext()) {
        programs.push_back({textOf(found, 0), ado::ObjectName(textOf(found, 1), textOf(found, 5)),
                            textOf(found, 2), ado::ObjectName(textOf(found, 3), textOf(found, 6)),
                            isTrue(found, 4)});
    }
    return programs;
}

std::optional<std::int64_t> lastIdentityOf(ado::Connection& connection,
                                           const ado::SqlDialect& dialect,
                                           const ado::ObjectName& table,
                                           const std::string& column) {
    return numberOf(connection, dialect.lastIdentity(table, column));
}

}  // namespace kap::migrate
