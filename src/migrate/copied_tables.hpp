#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "base/ascii.hpp"
#include "data/dialects/sql_dialect.hpp"
#include "data/driver.hpp"

// What a database tells of its tables, for a copy of them.
namespace kap::migrate {

// The table in which a copy keeps its notes in the target.
inline constexpr const char* kCopyNotes = "KAP_COPY";

// The primary key, a unique constraint or an index.
struct CopiedIndex {
    enum class Kind : std::uint8_t { PrimaryKey, UniqueKey, Index };
    struct Part {
        std::string column;
        bool descending = false;
    };
    std::string name;
    Kind kind = Kind::Index;
    bool unique = false;
    std::vector<Part> parts;
    std::vector<std::string> carried;  // columns that it holds beside its own
    std::string filter;                // of which rows it is, in the source's words; empty: of all
    bool expressions = false;          // whether a part is none of the columns

    [[nodiscard]] std::vector<std::string> columns() const;
};

struct CopiedForeignKey {
    std::string name;
    ado::ObjectName table;
    std::vector<std::string> columns;
    ado::ObjectName referenced;
    std::vector<std::string> referencedColumns;
    std::string onDelete;  // NO ACTION, CASCADE, SET NULL, SET DEFAULT
    std::string onUpdate;
    bool disabled = false;
};

// What a database keeps as the text of its dialect.
struct CopiedProgram {
    std::string kind;  // "view", "procedure", "function", "trigger", "check", "synonym", "type"
    ado::ObjectName name;
    std::string text;       // empty: the database does not tell
    ado::ObjectName table;  // of a check or trigger
    bool disabled = false;
};

// The dialect of an open connection's database.
[[nodiscard]] const ado::SqlDialect& dialectOf(ado::Connection& connection);

[[nodiscard]] std::string joined(const std::vector<std::string>& parts);
// What a query answers, every row of it, as it is stored. Raises AutomationError.
[[nodiscard]] ado::Result answerOf(ado::Connection& connection, const std::string& query);
// A query's rows, and the text of a cell; Null is empty.
[[nodiscard]] Ref<ado::Recordset> opened(ado::Connection& connection, const std::string& query);
[[nodiscard]] std::string textOf(const Ref<ado::Recordset>& rows, const Variant& column);

// The tables of the connection's own schema in the database's order, without the copy's notes;
// those of other schemas; and all of them.
[[nodiscard]] std::vector<std::string> tablesOf(ado::Connection& connection,
                                                const ado::SqlDialect& dialect);
[[nodiscard]] std::vector<ado::ObjectName> otherTablesOf(ado::Connection& connection,
                                                         const ado::SqlDialect& dialect);
[[nodiscard]] std::vector<ado::ObjectName> allTablesOf(ado::Connection& connection,
                                                       const ado::SqlDialect& dialect);
[[nodiscard]] std::vector<ado::ColumnDefinition> columnsOf(ado::Connection& connection,
                                                           const ado::SqlDialect& dialect,
                                                           const ado::ObjectName& table);
// The primary key comes first where there is one.
[[nodiscard]] std::vector<CopiedIndex> indexesOf(ado::Connection& connection,
                                                 const ado::SqlDialect& dialect,
                                                 const ado::ObjectName& table);
// The columns of the primary key, in order.
[[nodiscard]] std::vector<std::string> keyOf(ado::Connection& connection,
                                             const ado::SqlDialect& dialect,
                                             const ado::ObjectName& table);
[[nodiscard]] std::vector<CopiedProgram> programsOf(ado::Connection& connection,
                                                    const ado::SqlDialect& dialect);
// The last identity that the table has given out.
[[nodiscard]] std::optional<std::int64_t> lastIdentityOf(ado::Connection& connection,
                                                         const ado::SqlDialect& dialect,
                                                         const ado::ObjectName& table,
                                                         const std::string& column);
// The value of a query that has one, Null for none.
[[nodiscard]] std::optional<std::int64_t> numberOf(ado::Connection& connection,
                                                   const std::string& query);
[[nodiscard]] std::vector<CopiedForeignKey> foreignKeysOf(ado::Connection& connection,
                                                          const ado::SqlDialect& dialect);

}  // namespace kap::migrate
