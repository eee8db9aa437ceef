#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "migrate/copy_dialect.hpp"

// What a database tells of its tables, for a copy of them.
namespace kap::migrate {

// The table in which a copy keeps its notes in the target.
inline constexpr const char* kCopyNotes = "KAP_COPY";

// An index, or a unique constraint; not the primary key.
struct CopiedIndex {
    struct Part {
        std::string column;
        bool descending = false;
    };
    std::string name;
    std::string table;
    bool unique = false;
    std::vector<Part> parts;
};

struct CopiedForeignKey {
    std::string name;
    std::string table;
    std::vector<std::string> columns;
    std::string referenced;
    std::vector<std::string> referencedColumns;  // empty: the database does not tell
    std::string onDelete;                        // NO ACTION, CASCADE, SET NULL, SET DEFAULT
    std::string onUpdate;
};

[[nodiscard]] std::string joined(const std::vector<std::string>& parts);
// A query's rows, and the text of a cell; Null is empty.
[[nodiscard]] Ref<ado::Recordset> opened(ado::Connection& connection, const std::string& query);
[[nodiscard]] std::string textOf(const Ref<ado::Recordset>& rows, const Variant& column);

// The tables in the database's order, without the copy's notes.
[[nodiscard]] std::vector<std::string> tablesOf(ado::Connection& connection);
[[nodiscard]] std::vector<CopiedColumn> columnsOf(const ado::Recordset& rows);
// The same with their defaults.
[[nodiscard]] std::vector<CopiedColumn> columnsOf(ado::Connection& connection,
                                                  const CopyDialect& dialect,
                                                  const std::string& table);
// The columns of the primary key, in order.
[[nodiscard]] std::vector<std::string> keyOf(ado::Connection& connection, const std::string& table);
[[nodiscard]] std::vector<CopiedIndex> indexesOf(ado::Connection& connection,
                                                 const std::string& table);
[[nodiscard]] std::vector<CopiedForeignKey> foreignKeysOf(ado::Connection& connection,
                                                          const CopyDialect& dialect);

}  // namespace kap::migrate
