#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "engine/catalog/schema_catalogue.hpp"
#include "engine/plan/capture.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// The tables and triggers beside the written tables that catch rows (see capture.hpp).
//
// They are SQLite's: it drops the triggers with their table, keeps the rest, and takes all back
// with a transaction that is undone. So whether they are there is asked of the database each time.
// They are made for certain columns, and a trigger for others would refuse every write of its
// table.
class CapturedTables {
public:
    CapturedTables(Database& database, const SchemaCatalogue& catalogue)
        : database_(database), catalogue_(catalogue) {}

    // From here on a table's written rows can be caught. Within a writing transaction.
    void ensure(const Table& table);
    // The same for rows that nothing writes: those that a trigger fires instead of.
    void ensureRows(const Table& shape);
    // The rows that were caught are forgotten.
    void empty(const Table& table);
    // A table is about to change, or to get another name. Within a writing transaction.
    void remove(const Table& table);
    // What was made for columns that others have changed since goes. To be called within a writing
    // transaction, before it writes.
    void removeStale();
    // A temporary table was dropped, and its triggers with it.
    void dropped(const std::string& name) noexcept;

private:
    struct Capture {
        std::string table;
        int level = 0;
        std::string columns;        // that are caught
        std::uint64_t checked = 0;  // the catalogue's changes of the file when they were compared
        bool temporary = false;
    };

    void noticeUndoing();
    [[nodiscard]] bool isThere(const Table& table);

    Database& database_;
    const SchemaCatalogue& catalogue_;
    PreparedStatement count_;
    std::map<std::string, Capture> captures_;    // by captureKey()
    std::map<std::string, std::string> shapes_;  // the columns of ensureRows(), likewise
    std::uint64_t checked_ = 0;
    std::uint64_t undoings_ = 0;
};

}  // namespace kap::engine
