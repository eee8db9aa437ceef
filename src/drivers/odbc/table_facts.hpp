#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "drivers/odbc/column_types.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// Where a table is; what is empty is not known, or not needed.
struct TableName {
    std::string catalog;
    std::string schema;
    std::string name;
    friend bool operator<(const TableName& left, const TableName& right) {
        return std::tie(left.catalog, left.schema, left.name) <
               std::tie(right.catalog, right.schema, right.name);
    }
};

// What the catalogue tells of one table.
struct TableFacts {
    struct Column {
        std::string name;
        AnnouncedType type;
        bool nullable = true;
        bool identity = false;
        bool generated = false;  // computed from other columns: it cannot be written
    };

    std::vector<Column> columns;
    // The primary key; without one the first unique index whose columns are never Null; empty:
    // none.
    std::vector<std::string> key;
    bool triggers = false;  // as far as the server's dialect tells

    [[nodiscard]] const Column* find(std::string_view column) const;
};

// The tables of a connection's database, asked for once each.
class TableCatalogue {
public:
    explicit TableCatalogue(OdbcConnection& connection) : connection_(connection) {}

    // Asks the database for a table that is not known yet.
    const TableFacts& facts(const TableName& table, std::chrono::seconds timeout);
    // The table has triggers after all.
    void noteTriggers(const TableName& table) { tables_[table].triggers = true; }
    // Only what is known; null: nothing.
    [[nodiscard]] const TableFacts* known(const TableName& table) const;
    // What a client did may have changed tables.
    void forget() { tables_.clear(); }

private:
    [[nodiscard]] TableFacts ask(const TableName& table, std::chrono::seconds timeout) const;
    [[nodiscard]] TableFacts query(const std::string& text, std::chrono::seconds timeout) const;

    OdbcConnection& connection_;
    std::map<TableName, TableFacts> tables_;
};

}  // namespace kap::ado::odbc
