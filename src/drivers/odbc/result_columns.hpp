#pragma once

#include <vector>

#include "drivers/odbc/known_queries.hpp"
#include "drivers/odbc/odbc_connection.hpp"
#include "drivers/odbc/table_facts.hpp"

namespace kap::ado::odbc {

// The tables that rows are written to, by the name that their columns give (ColumnInfo::baseTable).
using BaseTables = std::map<std::string, TableName, std::less<>>;

// Describes the columns of an open result: types and sizes by the driver; base tables and columns
// by the driver or, when it does not tell, by the analysis of the query; keys, identities and row
// versions by the catalogue.
class ResultColumns {
public:
    ResultColumns(OdbcConnection& connection, TableCatalogue& catalogue, BaseTables& tables)
        : connection_(connection), catalogue_(catalogue), tables_(tables) {}

    // Asks the catalogue for the tables of a query that is going to be run: where only one result
    // can be open, it cannot be asked later.
    void prepare(const QueryAnalysis& query, std::chrono::seconds timeout);

    // Remembers the columns in the query, and takes them from there when the result is announced as
    // the one before: drivers are slow to tell the rest.
    [[nodiscard]] std::vector<ColumnInfo> describe(const Handle& statement, std::size_t count,
                                                   KnownQuery& query, std::chrono::seconds timeout);

private:
    [[nodiscard]] std::vector<ColumnInfo> describeAll(const Handle& statement,
                                                      const std::vector<AnnouncedColumn>& announced,
                                                      const QueryAnalysis& query,
                                                      std::chrono::seconds timeout);
    [[nodiscard]] ColumnInfo describeOne(SQLHSTMT statement, SQLUSMALLINT number,
                                         const AnnouncedColumn& announced);
    void takeFromQuery(const QueryAnalysis& query, std::vector<ColumnInfo>& columns);
    void takeFromCatalogue(std::vector<ColumnInfo>& columns, std::chrono::seconds timeout);
    [[nodiscard]] const TableFacts* factsOf(const TableName& table, std::chrono::seconds timeout);
    [[nodiscard]] std::string baseName(const TableName& table);
    [[nodiscard]] TableName nameOf(const QueryTable& table) const;

    OdbcConnection& connection_;
    TableCatalogue& catalogue_;
    BaseTables& tables_;
};

}  // namespace kap::ado::odbc
