#include "drivers/odbc/result_columns.hpp"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "base/ascii.hpp"
#include "base/unicode.hpp"
#include "drivers/odbc/column_types.hpp"

namespace kap::ado::odbc {
namespace {

std::string textAttribute(SQLHSTMT statement, SQLUSMALLINT column, SQLUSMALLINT what) {
    std::array<char16_t, 256> text{};
    constexpr auto kBytes = static_cast<SQLSMALLINT>(sizeof(text));
    SQLSMALLINT length = 0;
    const SQLRETURN code =
        SQLColAttributeW(statement, column, what, text.data(), kBytes, &length, nullptr);
    return SQL_SUCCEEDED(code) ? unicode::displayUtf8(std::u16string_view(text.data()))
                               : std::string();
}

SQLLEN numberAttribute(SQLHSTMT statement, SQLUSMALLINT column, SQLUSMALLINT what) {
    SQLLEN value = 0;
    const SQLRETURN code = SQLColAttributeW(statement, column, what, nullptr, 0, nullptr, &value);
    return SQL_SUCCEEDED(code) ? value : 0;
}

// A result's column may come from a query that shows a table's column twice, or renames it.
const QueryTable* tableNamed(const QueryAnalysis& query, const std::string& qualifier) {
    const auto found = std::ranges::find_if(query.tables, [&](const QueryTable& table) {
        return equalsIgnoringCase(table.alias, qualifier);
    });
    return found == query.tables.end() ? nullptr : &*found;
}

AnnouncedColumn announcedColumn(SQLHSTMT statement, SQLUSMALLINT number) {
    AnnouncedColumn column;
    std::array<char16_t, 256> name{};
    SQLSMALLINT nameLength = 0;
    SQLDescribeColW(statement, number, wide(name.data()), static_cast<SQLSMALLINT>(name.size()),
                    &nameLength, &column.type, &column.size, &column.decimals, &column.nullable);
    column.name = unicode::displayUtf8(std::u16string_view(name.data()));
    return column;
}

// Where a column of the result comes from.
struct Origin {
    const QueryTable* table = nullptr;
    std::string column;
};

}  // namespace

TableName ResultColumns::nameOf(const QueryTable& table) const {
    const ServerDialect& dialect = connection_.dialect();
    return {dialect.folded(table.catalog), dialect.folded(table.schema),
            dialect.folded(table.name)};
}

// Two tables of one name are told apart by their schemas and databases.
std::string ResultColumns::baseName(const TableName& table) {
    const auto same = [&](const TableName& other) { return !(other < table) && !(table < other); };
    const auto found = tables_.find(table.name);
    if (found == tables_.end() || same(found->second)) {
        tables_.insert_or_assign(table.name, table);
        return table.name;
    }
    std::string qualified = table.schema + "." + table.name;
    if (!table.catalog.empty()) {
        qualified.insert(0, table.catalog + ".");
    }
    tables_.insert_or_assign(qualified, table);
    return qualified;
}

void ResultColumns::prepare(const QueryAnalysis& query, std::chrono::seconds timeout) {
    if (connection_.dialect().driver().concurrent || !query.isReadable || query.isCombined) {
        return;
    }
    for (const QueryTable& table : query.tables) {
        (void)catalogue_.facts(nameOf(table), timeout);
    }
}

std::vector<ColumnInfo> ResultColumns::describe(const Handle& statement, std::size_t count,
                                                KnownQuery& query, std::chrono::seconds timeout) {
    std::vector<AnnouncedColumn> announced;
    announced.reserve(count);
    for (std::size_t i = 1; i <= count; ++i) {
        announced.push_back(announcedColumn(statement.get(), static_cast<SQLUSMALLINT>(i)));
    }
    if (!query.oneResult || query.announced != announced) {
        query.columns = describeAll(statement, announced, query.analysis, timeout);
        query.announced = std::move(announced);
    }
    return query.columns;
}

std::vector<ColumnInfo> ResultColumns::describeAll(const Handle& statement,
                                                   const std::vector<AnnouncedColumn>& announced,
                                                   const QueryAnalysis& query,
                                                   std::chrono::seconds timeout) {
    std::vector<ColumnInfo> columns;
    columns.reserve(announced.size());
    for (const AnnouncedColumn& column : announced) {
        const auto number = static_cast<SQLUSMALLINT>(columns.size() + 1);
        columns.push_back(describeOne(statement.get(), number, column));
    }
    const bool told = std::ranges::any_of(
        columns, [](const ColumnInfo& column) { return !column.baseTable.empty(); });
    if (query.isCombined) {
        for (ColumnInfo& column : columns) {
            column.baseTable.clear();
            column.baseColumn.clear();
        }
        return columns;
    }
    if (!told && query.isReadable) {
        takeFromQuery(query, columns);
    }
    takeFromCatalogue(columns, timeout);
    return columns;
}

ColumnInfo ResultColumns::describeOne(SQLHSTMT statement, SQLUSMALLINT number,
                                      const AnnouncedColumn& announced) {
    ColumnInfo info;
    info.name = announced.name;
    info.nullable = announced.nullable != SQL_NO_NULLS;
    AnnouncedType type;
    type.code = announced.type;
    type.size = announced.size;
    type.decimals = announced.decimals;
    type.name = textAttribute(statement, number, SQL_DESC_TYPE_NAME);
    type.bytes = numberAttribute(statement, number, SQL_DESC_OCTET_LENGTH);
    connection_.dialect().describe(type, info);
    const std::string table = textAttribute(statement, number, SQL_DESC_BASE_TABLE_NAME);
    const std::string column = textAttribute(statement, number, SQL_DESC_BASE_COLUMN_NAME);
    if (!table.empty() && !column.empty()) {
        info.baseTable =
            baseName({{}, textAttribute(statement, number, SQL_DESC_SCHEMA_NAME), table});
        info.baseColumn = column;
    }
    info.identity = numberAttribute(statement, number, SQL_DESC_AUTO_UNIQUE_VALUE) == SQL_TRUE;
    return info;
}

// Goes through the items of the query, stars replaced by their tables' columns, beside the columns
// of the result; when these are not as many, the query has not been understood. Of some tables, as
// temporary ones, servers tell nothing: the columns of a query of one such table are its own, by
// their names.
void ResultColumns::takeFromQuery(const QueryAnalysis& query, std::vector<ColumnInfo>& columns) {
    std::vector<Origin> origins;
    const auto isUntold = [&](const QueryTable& table) {
        const TableFacts* facts = catalogue_.known(nameOf(table));
        return query.tables.size() == 1 && (facts == nullptr || facts->columns.empty());
    };
    const auto addUntold = [&](const QueryTable& table) {
        const std::size_t others = query.items.size() - 1;
        const std::size_t end = origins.size() + columns.size() - std::min(others, columns.size());
        for (std::size_t i = origins.size(); i < std::min(end, columns.size()); ++i) {
            origins.push_back({&table, columns[i].name});
        }
    };
    const auto addTable = [&](const QueryTable& table) {
        if (isUntold(table)) {
            addUntold(table);
        } else if (const TableFacts* facts = catalogue_.known(nameOf(table))) {
            for (const TableFacts::Column& column : facts->columns) {
                origins.push_back({&table, column.name});
            }
        }
    };
    for (const QueryItem& item : query.items) {
        const QueryTable* table = tableNamed(query, item.qualifier);
        if (item.kind == QueryItem::Kind::Star && item.qualifier.empty()) {
            std::ranges::for_each(query.tables, addTable);
        } else if (item.kind == QueryItem::Kind::Star && table != nullptr) {
            addTable(*table);
        } else if (item.kind == QueryItem::Kind::Column) {
            for (const QueryTable& each : query.tables) {
                const TableFacts* facts = catalogue_.known(nameOf(each));
                const bool here =
                    isUntold(each) || (facts != nullptr && facts->find(item.column) != nullptr);
                if (table == nullptr && item.qualifier.empty() && here) {
                    table = &each;
                }
            }
            origins.push_back({table, item.column});
        } else {
            origins.push_back({});
        }
    }
    if (origins.size() != columns.size()) {
        return;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (origins[i].table != nullptr) {
            columns[i].baseTable = baseName(nameOf(*origins[i].table));
            columns[i].baseColumn = origins[i].column;
        }
    }
}

const TableFacts* ResultColumns::factsOf(const TableName& table, std::chrono::seconds timeout) {
    if (connection_.dialect().driver().concurrent) {
        return &catalogue_.facts(table, timeout);
    }
    // The query may have left out what the driver tells.
    const TableFacts* known = catalogue_.known(table);
    return known != nullptr ? known : catalogue_.known({{}, {}, table.name});
}

void ResultColumns::takeFromCatalogue(std::vector<ColumnInfo>& columns,
                                      std::chrono::seconds timeout) {
    std::set<std::string> names;
    for (const ColumnInfo& column : columns) {
        if (!column.baseTable.empty()) {
            names.insert(column.baseTable);
        }
    }
    for (const std::string& name : names) {
        const TableFacts* facts = factsOf(tables_.at(name), timeout);
        if (facts == nullptr) {
            continue;
        }
        const auto isHere = [&](const std::string& part) {
            return std::ranges::any_of(columns, [&](const ColumnInfo& column) {
                return column.baseTable == name && column.baseColumn == part;
            });
        };
        const bool whole = std::ranges::all_of(facts->key, isHere);
        for (ColumnInfo& column : columns) {
            const TableFacts::Column* fact =
                column.baseTable == name ? facts->find(column.baseColumn) : nullptr;
            if (fact == nullptr) {
                continue;
            }
            column.baseColumn = fact->name;
            column.nullable = fact->nullable;
            column.identity = column.identity || fact->identity;
            column.generated = fact->generated;
            column.key = whole && std::ranges::find(facts->key, fact->name) != facts->key.end();
            ColumnInfo stored;
            connection_.dialect().describe(fact->type, stored);
            if (stored.rowVersion) {
                column.type = stored.type;
                column.rowVersion = true;
                column.isLong = false;
                column.fixedLength = true;
                column.definedSize = stored.definedSize;
            }
        }
    }
}

}  // namespace kap::ado::odbc
