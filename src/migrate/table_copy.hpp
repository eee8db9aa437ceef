#pragma once

#include <functional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "migrate/copy_dialect.hpp"
#include "migrate/table_digest.hpp"

namespace kap::migrate {

// How a table got over.
struct CopyOutcome {
    std::int64_t rows = 0;
    TableDigest source;
    TableDigest target;
    [[nodiscard]] bool isWhole() const { return source == target; }
};

// Copies one table to another database: its columns with their defaults, primary key and rows.
//
// The target notes in the table KAP_COPY, in the transaction that writes them, how many rows have
// arrived: a copy that was interrupted goes on behind them, in the order of the key. A table
// without key is begun again.
class TableCopy {
public:
    TableCopy(ado::Connection& from, ado::Connection& to);

    // Looks whether each of these tables can be copied, before anything is written into the target.
    // Raises AutomationError when the source has no such table, and std::runtime_error when the
    // target has one that is not empty and not of an interrupted copy.
    void check(const std::vector<std::string>& tables);
    // Makes the table of notes where there is none; `abandon` takes it away again while it holds no
    // note.
    void begin();
    void abandon();
    // The target's name for a table.
    [[nodiscard]] std::string targetName(const std::string& table) const;
    // Raises AutomationError when a database refuses something, and std::runtime_error when the
    // target's table is not empty and not of an interrupted copy. `progress` is told the rows done
    // and those there are.
    [[nodiscard]] CopyOutcome run(const std::string& table,
                                  const std::function<void(std::int64_t, std::int64_t)>& progress);
    // Forgets the notes: everything has arrived.
    void finish();

private:
    struct Table;
    [[nodiscard]] Table describe(const std::string& name);
    [[nodiscard]] bool hasNotes();
    [[nodiscard]] bool isInTarget(const Table& table);
    [[nodiscard]] std::int64_t rowsNoted(const std::string& target);
    void create(const Table& table);
    void requireEmpty(const Table& table);
    void writeRows(const Table& table, std::int64_t done,
                   const std::function<void(std::int64_t, std::int64_t)>& progress);
    [[nodiscard]] TableDigest digest(ado::Connection& connection, const std::string& quotedName);

    ado::Connection& from_;
    ado::Connection& to_;
    const CopyDialect& fromDialect_;
    const CopyDialect& toDialect_;
};

}  // namespace kap::migrate
