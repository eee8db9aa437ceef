#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ado/update_plan.hpp"
#include "base/unicode.hpp"
#include "data/driver.hpp"

namespace kap::ado {

// What a batch update still has to write of one row.
struct PendingRow {
    enum class Kind : std::uint8_t { Modified, New, Deleted };
    Kind kind = Kind::Modified;
    // What the database held in the columns changed since; unset: not changed.
    PendingValues original;
    std::int32_t failure = 0;  // bits of RecordStatusEnum: why the last batch could not write it
};

// The fetched rows of a recordset, by column, with what became of them since. A recordset and its
// clones share one table: what one changes all see.
class RowTable {
public:
    explicit RowTable(Result result) : result_(std::move(result)) {}
    // A table without database behind it, to which columns are added.
    [[nodiscard]] static std::shared_ptr<RowTable> madeByHand();

    [[nodiscard]] const std::vector<ColumnInfo>& columns() const noexcept {
        return result_.columns;
    }
    [[nodiscard]] const Result& result() const noexcept { return result_; }
    [[nodiscard]] ColumnStore& store(std::size_t column) { return result_.rows[column]; }
    [[nodiscard]] const ColumnStore& store(std::size_t column) const {
        return result_.rows[column];
    }
    // The first column with this name, compared ignoring case.
    [[nodiscard]] std::optional<std::size_t> find(std::u16string_view name) const;

    // The rows that are here, deleted ones included.
    [[nodiscard]] std::size_t size() const noexcept {
        return result_.rows.empty() ? 0 : result_.rows.front().size();
    }
    [[nodiscard]] bool complete() const noexcept { return result_.rest == nullptr; }
    // Fetches the rows that the database has not sent yet.
    void fetchAll();
    // The same with some of them.
    void fetchMore();

    // Lets `rows` give the rows that the database has not sent yet: they come while the client does
    // something else. Who needs one that is not here waits for it only when `waits`.
    void comeGradually(std::shared_ptr<RowSource> rows, bool waits);
    [[nodiscard]] bool isGradual() const noexcept { return gradual_ && !complete(); }
    // The same with the rows that have come; or, where that is chosen, waits for one at least.
    // False when none has come.
    bool takeReady();
    [[nodiscard]] bool waitForSome();

    // Of rows that are read once, forward: the next ones may take the place of those before.
    void readOnce() noexcept { once_ = true; }
    [[nodiscard]] bool isReadOnce() const noexcept { return once_; }
    // Puts the next rows in the place of all that are here; false when there were none, and nothing
    // has changed then.
    [[nodiscard]] bool nextWindow();
    // How many rows have made place for others.
    [[nodiscard]] std::size_t passedRows() const noexcept { return passed_; }
    // Forgets the rows that the database has not sent yet.
    void abandonRest() noexcept { result_.rest.reset(); }
    // The same query has been run again: its rows from the first on take the place of those here.
    // False when they have other columns.
    [[nodiscard]] bool startAgain(Result& result);

    // The rows that are not deleted, or deleted only here.
    [[nodiscard]] std::vector<std::size_t> rowsKept();
    // Keeps no more rows than this; 0: all.
    void limit(std::size_t rows);

    [[nodiscard]] bool isDeleted(std::size_t row) const noexcept {
        return row < deleted_.size() && deleted_[row];
    }
    // No database holds it: it waits to be inserted, or there is none.
    [[nodiscard]] bool isNew(std::size_t row) const noexcept;
    [[nodiscard]] std::size_t deletedCount() const noexcept { return deletedCount_; }
    void setDeleted(std::size_t row, bool deleted);
    // Another number each time that a row was deleted, brought back or added.
    [[nodiscard]] std::uint64_t generation() const noexcept { return generation_; }

    // Puts the values that are set into a row; a new one has Null in the other columns. Whole, or
    // not at all when there is no memory for it.
    void put(std::size_t row, const PendingValues& values);
    void append(const PendingValues& values);

    // Make room beforehand, so that taking in what the database has written does not fail for want
    // of memory: for such values, and what it sets besides, in a row that is there or in `rows` new
    // ones; and for marking a row as deleted.
    void makeRoom(const PendingValues& values, std::size_t rows);
    void makeRoomForDeletion();

    // Makes the Nulls of a column read as the neutral value, in every row.
    void replaceNulls(std::size_t column);
    // Gives a row that waits for a batch update what it held before.
    void revert(std::size_t row);

    // The cell as the database holds it: what an update must find there.
    [[nodiscard]] Value original(std::size_t row, std::size_t column) const;
    // The same, or what the last comparison with the database found (Resync).
    [[nodiscard]] Value underlying(std::size_t row, std::size_t column) const;
    void setUnderlying(std::size_t row, PendingValues values);
    void forgetUnderlying(std::size_t row) { underlying_.erase(row); }

    // Rows that wait for a batch update, by row.
    [[nodiscard]] std::map<std::size_t, PendingRow>& pending() noexcept { return pending_; }
    [[nodiscard]] const PendingRow* pending(std::size_t row) const noexcept;
    // The rows that the last update, deletion, or re-reading touched.
    [[nodiscard]] std::vector<std::size_t>& affected() noexcept { return affected_; }
    // Bits of RecordStatusEnum.
    [[nodiscard]] std::int32_t status(std::size_t row) const;

    // Of a table made by hand: whether there is none behind it, and its columns.
    [[nodiscard]] bool isMadeByHand() const noexcept { return madeByHand_; }
    // Its columns can still be changed: no recordset has been opened on it.
    [[nodiscard]] bool isDraft() const noexcept { return draft_; }
    void endDraft() noexcept { draft_ = false; }
    void addColumn(ColumnInfo column);
    [[nodiscard]] ColumnInfo& column(std::size_t ordinal) { return result_.columns[ordinal]; }
    void removeColumn(std::size_t column);

    [[nodiscard]] std::size_t memory() const noexcept;

private:
    void received(bool more);
    void makeRoom(std::size_t column, const PendingValues& values, std::size_t rows,
                  std::size_t besides);

    Result result_;
    bool madeByHand_ = false;
    bool draft_ = false;
    std::vector<bool> nullsReplaced_;  // by column; empty until it is done
    std::size_t limit_ = 0;
    bool once_ = false;
    bool gradual_ = false;
    bool waits_ = true;
    std::size_t passed_ = 0;
    std::vector<ColumnStore> window_;  // room for the next rows, while they are fetched
    mutable std::unordered_map<std::u16string, std::size_t, unicode::NameHash, unicode::NameEqual>
        byName_;                 // made on the first look-up
    std::vector<bool> deleted_;  // empty until a row is deleted
    std::size_t deletedCount_ = 0;
    std::uint64_t generation_ = 0;
    std::map<std::size_t, PendingRow> pending_;
    std::map<std::size_t, PendingValues> underlying_;
    std::vector<std::size_t> affected_;
};

}  // namespace kap::ado
