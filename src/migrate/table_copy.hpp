#pragma once

#include <functional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "data/dialects/sql_dialect.hpp"
#include "data/row_batch.hpp"
#include "migrate/table_digest.hpp"

namespace kap::migrate {

// How a table got over.
struct CopyOutcome {
    std::int64_t rows = 0;
    TableDigest source;
    TableDigest target;
    [[nodiscard]] bool isWhole() const { return source == target; }
};

// Copies one table to another database: its columns with their defaults, primary key and rows. What
// a column is computed from goes along where the target reads the source's dialect; elsewhere the
// column holds the values.
//
// The target notes in the table KAP_COPY, in the transaction that writes them, how many rows have
// arrived: a copy that was interrupted goes on behind them, in the order of the key. A table
// without key is begun again.
class TableCopy {
public:
    // `tell` is given a sentence for whatever is left behind.
    TableCopy(ado::Connection& from, ado::Connection& to,
              std::function<void(const std::string&)> tell);

    // Looks whether each of these tables can be copied, before anything is written into the target.
    // Raises AutomationError when the source has no such table, and std::runtime_error when the
    // target has one that is not empty and not of an interrupted copy.
    void check(const std::vector<ado::ObjectName>& tables);
    // Makes the table of notes where there is none; `abandon` takes it away again while it holds no
    // note.
    void begin();
    void abandon();
    // Raises AutomationError when a database refuses something, and std::runtime_error when the
    // target's table is not empty and not of an interrupted copy. `progress` is told the rows done
    // and those there are.
    [[nodiscard]] CopyOutcome run(const ado::ObjectName& table,
                                  const std::function<void(std::int64_t, std::int64_t)>& progress);
    // Forgets the notes: everything has arrived.
    void finish();

private:
    struct Table;
    [[nodiscard]] Table describe(const ado::ObjectName& name);
    [[nodiscard]] bool hasNotes();
    [[nodiscard]] bool isInTarget(const Table& table);
    [[nodiscard]] std::int64_t rowsNoted(const Table& table);
    void create(Table& table);
    // The table's name in the notes, as a constant.
    [[nodiscard]] std::string noted(const Table& table) const;
    [[nodiscard]] std::string noting(const Table& table) const;
    void makeTable(const Table& table);
    [[nodiscard]] std::string definition(const Table& table) const;
    [[nodiscard]] std::string definition(const Table& table,
                                         const ado::ColumnDefinition& column) const;
    [[nodiscard]] std::string primaryKey(const Table& table) const;
    void requireEmpty(const Table& table);
    void writeRows(const Table& table, std::int64_t done,
                   const std::function<void(std::int64_t, std::int64_t)>& progress);
    [[nodiscard]] ado::RowBatch batchOf(const Table& table, const ado::Result& page) const;
    void append(const Table& table, const ado::RowBatch& batch, std::int64_t done);
    void continueIdentity(const Table& table);

    ado::Connection& from_;
    ado::Connection& to_;
    const ado::SqlDialect& fromDialect_;
    const ado::SqlDialect& toDialect_;
    std::function<void(const std::string&)> tell_;
};

}  // namespace kap::migrate
