#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "engine/catalog/table_definition.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/error_slot.hpp"

namespace kap::engine {

struct Sequence;

// The table of the file that holds what SQLite's own schema cannot: which tables were made by this
// library, their identity columns, and the last values given out. Clients do not see it.
inline constexpr const char* kCountersTable = "kap_counters";

// Identity values and row versions: numbers that a database gives out once.
//
// A counter is read from the file when a transaction first needs it, counted up in memory, and
// written back once, before the commit. The transaction holds the file's write lock meanwhile, so
// two connections never give out the same number. Numbers given out by a statement that fails are
// not given out again by this connection.
//
// Serves the SQL functions kap_rowversion() and kap_identity('table'); both may only be called
// within a writing transaction.
class Counters {
public:
    // Errors of the functions go to `errorSlot`.
    Counters(Database& database, ErrorSlot& errorSlot);
    Counters(const Counters&) = delete;
    Counters& operator=(const Counters&) = delete;

    // What is known of a table beyond its schema; absent for tables that others made.
    struct Record {
        std::string identityColumn;  // empty: none
        Identity identity;
    };
    [[nodiscard]] std::optional<Record> find(const Table& table) const;

    // Keep step with CREATE TABLE and DROP TABLE, within their transaction.
    void add(const TableDefinition& definition);
    void remove(const DroppedTable& table);
    void rename(const Table& table, const std::string& newName);
    // Another name for the identity column; empty when it is dropped.
    void renameIdentity(const Table& table, const std::string& column);

    // The next number of a counter. Raise SqliteError when the file cannot be read and ServerError
    // 8115 when the numbers are used up.
    [[nodiscard]] std::int64_t nextRowVersion();
    [[nodiscard]] std::int64_t nextIdentity(const std::string& table);

    // A value that a statement itself gives an identity column: the next one goes on from the
    // farthest.
    void noteIdentity(const std::string& table, std::int64_t value);
    // The next number of the table is its first one again.
    void restart(const Table& table);
    // The next number goes on from `value`; it is `value` itself when none was given out before.
    // Within a writing transaction.
    void reseed(const std::string& table, std::int64_t value);
    // The last number that a table has given out, if any.
    [[nodiscard]] std::optional<std::int64_t> lastIdentityOf(const std::string& table);
    // The last number that a table has given out, or its first one when it has given none.
    [[nodiscard]] std::int64_t currentIdentity(const std::string& table);
    // Sequences have counters, too. Within a writing transaction.
    void addSequence(const Sequence& sequence);
    // The counter goes on with the step that the sequence has now, from its start when it begins
    // anew.
    void changeSequence(const Sequence& sequence, bool restarts);
    // The numbers that were drawn: the first and the last one, and how often the sequence went
    // through all of its numbers meanwhile.
    struct Drawn {
        std::int64_t first = 0;
        std::int64_t last = 0;
        std::int64_t cycles = 0;
    };
    // Draws so many numbers, at least one. Error 11728 when there are none left, and 11732, with
    // nothing drawn, when there are fewer.
    Drawn draw(const Sequence& sequence, std::int64_t count = 1);
    // The number with which the owner of a counter begins.
    [[nodiscard]] std::int64_t firstOf(const std::string& owner) { return current(owner).first; }

    // The identity that was given out last since this was asked before.
    [[nodiscard]] std::optional<std::int64_t> takeLastIdentity() {
        return std::exchange(lastIdentity_, std::nullopt);
    }
    // The last row version that was given out.
    [[nodiscard]] std::int64_t currentRowVersion();

    // Whether the current transaction has given out numbers that are not yet in the file.
    [[nodiscard]] bool pending() const noexcept;
    // Writes them to the file; part of every commit.
    void flush();
    // The same after everything else of the transaction was undone, which may have undone the
    // making of counters too.
    void flushAfterRollback();
    // The transaction has ended, one way or the other: the file is asked again.
    void transactionEnded() noexcept;
    // The same after a commit, with which what is known agrees with the file; and another one has
    // begun before anybody else has written.
    void committed() noexcept;
    void goOn() noexcept;
    // Tables may have been made anew with the same name.
    void schemaChanged();

    // What the SQL functions are to fail with.
    [[nodiscard]] ErrorSlot& errorSlot() noexcept { return errorSlot_; }

private:
    struct Counter {
        std::int64_t last = 0;
        std::int64_t first = 1;
        std::int64_t increment = 1;
        tsql::TypeSpec type{tsql::SqlType::BigInt};  // what the numbers must fit in
        bool started = false;                        // `last` has been given out
        bool current = false;  // agrees with the file or is ahead of it in this transaction
        bool pending = false;
        bool agreed = false;  // with the file, at the last commit
    };

    // The statements that run with nearly every write, for the file's tables and the temporary
    // ones.
    struct Kept {
        PreparedStatement read;
        PreparedStatement write;
    };

    [[nodiscard]] bool exists(bool temporary) const;
    void makeTable(bool temporary);
    void noteTextOrder();
    [[nodiscard]] Kept& kept(bool temporary);
    void tellOthers(bool temporary);
    [[nodiscard]] Counter& current(const std::string& owner);
    void load(const std::string& owner, Counter& counter);
    [[nodiscard]] std::int64_t next(const std::string& owner);

    Database& database_;
    ErrorSlot& errorSlot_;
    std::array<Kept, 2> kept_;
    std::optional<std::int64_t> lastIdentity_;
    std::map<std::string, Counter, std::less<>> counters_;  // by owner: a table, or "" for versions
};

}  // namespace kap::engine
