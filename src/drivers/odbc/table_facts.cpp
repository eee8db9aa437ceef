#include "drivers/odbc/table_facts.hpp"

#include <algorithm>
#include <map>
#include <utility>

#include "base/ascii.hpp"
#include "drivers/odbc/catalogue_call.hpp"

namespace kap::ado::odbc {
namespace {

std::optional<std::string> given(const std::string& part) {
    return part.empty() ? std::nullopt : std::optional(part);
}

// One column as the server's own query tells it; its place in the key, from 1, or 0.
std::int64_t readFact(CatalogueRows& rows, TableFacts& facts) {
    using Fact = ServerDialect::Fact;
    const auto flag = [&](Fact fact) { return rows.number(fact).value_or(0) != 0; };
    TableFacts::Column column;
    column.name = rows.text(Fact::Name);
    column.type.name = rows.text(Fact::Type);
    column.type.size = static_cast<SQLULEN>(rows.number(Fact::Size).value_or(0));
    column.type.decimals = static_cast<SQLSMALLINT>(rows.number(Fact::Scale).value_or(0));
    column.nullable = flag(Fact::Nullable);
    column.identity = flag(Fact::Identity);
    column.generated = flag(Fact::Generated);
    const std::int64_t place = rows.number(Fact::KeyPlace).value_or(0);
    facts.triggers = flag(Fact::Triggers);
    column.type.code = flag(Fact::Binary) ? SQL_BINARY : SQL_VARCHAR;
    facts.columns.push_back(std::move(column));
    return place;
}

// The places of a table's name in the catalogue functions.
struct NameParts {
    CatalogueName catalog;
    CatalogueName schema;
    CatalogueName name;

    NameParts(const TableName& table, bool pattern)
        : catalog(given(table.catalog)),
          schema(given(table.schema), pattern),
          name(table.name, pattern) {}
};

bool saysIdentity(const std::string& typeName, const std::string& defaultValue) {
    return asciiLower(typeName).find("identity") != std::string::npos ||
           defaultValue.starts_with("nextval(");
}

// Schemas in the way of the search path may have a table of the same name: the first one holds.
void readColumns(OdbcConnection& connection, const TableName& table, std::chrono::seconds timeout,
                 TableFacts& facts) {
    Handle statement = connection.newStatement(timeout);
    NameParts parts(table, true);
    connection.check(SQLColumnsW(statement.get(), parts.catalog.text(), parts.catalog.length(),
                                 parts.schema.text(), parts.schema.length(), parts.name.text(),
                                 parts.name.length(), nullptr, 0),
                     statement);
    CatalogueRows rows(connection, std::move(statement));
    std::string schema;
    while (rows.next()) {
        const std::string own = rows.text(2);
        if (!equalsIgnoringCase(rows.text(3), table.name)) {
            continue;  // the name has been taken for a pattern
        }
        if (facts.columns.empty()) {
            schema = own;
        } else if (own != schema) {
            continue;
        }
        TableFacts::Column column;
        column.name = rows.text(4);
        column.type.code = static_cast<SQLSMALLINT>(rows.number(5).value_or(SQL_VARCHAR));
        column.type.name = rows.text(6);
        column.type.size = static_cast<SQLULEN>(rows.number(7).value_or(0));
        column.type.bytes = static_cast<SQLLEN>(rows.number(8).value_or(0));
        column.type.decimals = static_cast<SQLSMALLINT>(rows.number(9).value_or(0));
        column.nullable = rows.number(11).value_or(SQL_NULLABLE) != SQL_NO_NULLS;
        column.identity = saysIdentity(column.type.name, rows.text(13));
        facts.columns.push_back(std::move(column));
    }
}

std::vector<std::string> primaryKey(OdbcConnection& connection, const TableName& table,
                                    std::chrono::seconds timeout) {
    Handle statement = connection.newStatement(timeout);
    NameParts parts(table, false);
    connection.check(SQLPrimaryKeysW(statement.get(), parts.catalog.text(), parts.catalog.length(),
                                     parts.schema.text(), parts.schema.length(), parts.name.text(),
                                     parts.name.length()),
                     statement);
    CatalogueRows rows(connection, std::move(statement));
    std::vector<std::string> key;
    while (rows.next()) {
        key.push_back(rows.text(4));
    }
    return key;
}

struct UniqueIndex {
    std::string name;
    std::vector<std::string> columns;
    bool usable = true;
};

std::vector<UniqueIndex> uniqueIndexes(OdbcConnection& connection, const TableName& table,
                                       std::chrono::seconds timeout) {
    Handle statement = connection.newStatement(timeout);
    NameParts parts(table, false);
    connection.check(SQLStatisticsW(statement.get(), parts.catalog.text(), parts.catalog.length(),
                                    parts.schema.text(), parts.schema.length(), parts.name.text(),
                                    parts.name.length(), SQL_INDEX_UNIQUE, SQL_QUICK),
                     statement);
    CatalogueRows rows(connection, std::move(statement));
    std::vector<UniqueIndex> indexes;
    while (rows.next()) {
        const bool many = rows.number(4).value_or(SQL_TRUE) != SQL_FALSE;
        const std::string name = rows.text(6);
        const bool statistics = rows.number(7).value_or(SQL_TABLE_STAT) == SQL_TABLE_STAT;
        if (statistics || many) {
            continue;
        }
        if (indexes.empty() || indexes.back().name != name) {
            indexes.push_back({name, {}, true});
        }
        indexes.back().columns.push_back(rows.text(9));
        // An index of some of the rows only makes no key.
        indexes.back().usable = indexes.back().usable && rows.text(13).empty();
    }
    return indexes;
}

std::vector<std::string> uniqueKey(const std::vector<UniqueIndex>& indexes,
                                   const TableFacts& facts) {
    for (const UniqueIndex& index : indexes) {
        const bool whole = std::ranges::all_of(index.columns, [&](const std::string& name) {
            const TableFacts::Column* column = facts.find(name);
            return column != nullptr && !column->nullable;
        });
        if (index.usable && whole) {
            return index.columns;
        }
    }
    return {};
}

}  // namespace

const TableFacts::Column* TableFacts::find(std::string_view column) const {
    const auto found = std::ranges::find_if(
        columns, [&](const Column& each) { return equalsIgnoringCase(each.name, column); });
    return found == columns.end() ? nullptr : &*found;
}

const TableFacts& TableCatalogue::facts(const TableName& table, std::chrono::seconds timeout) {
    TableFacts& facts = tables_[table];
    if (facts.columns.empty()) {  // new, or not there the last time
        facts = ask(table, timeout);
    }
    return facts;
}

const TableFacts* TableCatalogue::known(const TableName& table) const {
    const auto found = tables_.find(table);
    return found == tables_.end() ? nullptr : &found->second;
}

TableFacts TableCatalogue::query(const std::string& text, std::chrono::seconds timeout) const {
    Handle statement = connection_.newStatement(timeout);
    const std::u16string units = String(text).units();
    connection_.check(
        SQLExecDirectW(statement.get(), wide(units), static_cast<SQLINTEGER>(units.size())),
        statement);
    CatalogueRows rows(connection_, std::move(statement));
    TableFacts made;
    std::map<std::int64_t, std::string> key;
    while (rows.next()) {
        const std::int64_t place = readFact(rows, made);
        if (place > 0) {
            key.emplace(place, made.columns.back().name);
        }
    }
    for (const auto& [place, name] : key) {
        made.key.push_back(name);
    }
    return made;
}

TableFacts TableCatalogue::ask(const TableName& table, std::chrono::seconds timeout) const {
    const std::string text = connection_.dialect().factsQuery(table);
    if (!text.empty()) {
        return query(text, timeout);
    }
    TableFacts made;
    readColumns(connection_, table, timeout, made);
    if (made.columns.empty()) {
        return made;
    }
    made.key = primaryKey(connection_, table, timeout);
    if (made.key.empty()) {
        made.key = uniqueKey(uniqueIndexes(connection_, table, timeout), made);
    }
    return made;
}

}  // namespace kap::ado::odbc
