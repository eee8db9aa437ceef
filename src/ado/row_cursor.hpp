#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/variant.hpp>
#include <kaputil/data/enumerations.hpp>

#include "ado/criteria.hpp"
#include "ado/row_table.hpp"
#include "ado/row_view.hpp"
#include "ado/row_writer.hpp"

namespace kap::ado {

// Is told when a field of the current record is about to be assigned, and has it assigned.
class FieldObserver {
public:
    FieldObserver() = default;
    FieldObserver(const FieldObserver&) = delete;
    FieldObserver& operator=(const FieldObserver&) = delete;
    virtual ~FieldObserver() = default;
    virtual void assigning(std::size_t column, const std::function<void()>& assign) = 0;
};

// One reader's way through a table of rows: the rows that it sees and their order, the current
// position, and the record that is being edited. Fields and recordset share it; each clone has one
// of its own on the same table.
//
// What is being edited is kept apart from the table until the record is saved.
class RowCursor {
public:
    struct Options {
        CursorLocationEnum location = CursorLocationEnum::adUseClient;
        bool readOnly = false;
        bool batch = false;        // saved records wait in the table for a batch update
        bool forwardOnly = false;  // does not go back, and does not count
        WriteRules writing;
    };

    RowCursor(std::shared_ptr<RowTable> table, Options options);

    [[nodiscard]] RowTable& table() noexcept { return *table_; }
    [[nodiscard]] const std::shared_ptr<RowTable>& sharedTable() const noexcept { return table_; }
    [[nodiscard]] const Options& options() const noexcept { return options_; }
    [[nodiscard]] const std::vector<ColumnInfo>& columns() const noexcept {
        return table_->columns();
    }
    [[nodiscard]] std::optional<std::size_t> find(std::u16string_view name) const {
        return table_->find(name);
    }
    // Bits of FieldAttributeEnum.
    [[nodiscard]] std::int32_t attributes(std::size_t column) const;

    [[nodiscard]] bool bof() const noexcept;
    [[nodiscard]] bool eof() const noexcept;
    // The rows seen; a cursor that only goes forward counts them too.
    [[nodiscard]] std::size_t count();
    // From 1, or a value of PositionEnum.
    [[nodiscard]] std::int32_t absolutePosition() const noexcept;
    void moveFirst();
    void moveLast();
    // `records` forward or, when negative, back from the current one; ends at EOF or BOF.
    void move(std::int64_t records);
    // To the row at a position from 1; behind the last one to EOF.
    void moveToPosition(std::size_t position);

    // The rows shown from the current one on; of rows that are still to be fetched no more than
    // are wanted have to be there.
    [[nodiscard]] std::size_t rowsLeft(std::size_t wanted);
    // Whether the first record has made place for others, so that the query has to be run again.
    [[nodiscard]] bool hasPassedRows() const noexcept { return table_->passedRows() > 0; }
    // Whether moving to the next record has to wait for the database.
    [[nodiscard]] bool fetchesNext() const noexcept {
        return !table_->complete() && position_ + 1 >= end();
    }
    // Before the first of the rows that have been put in the place of the others.
    void startAgain() noexcept { position_ = -1; }

    // The current row; raises 3021 without one, -2147217885 when it has been deleted.
    [[nodiscard]] std::size_t currentRow() const;
    // The same, also when it has been deleted.
    [[nodiscard]] std::size_t currentPlaceRow() const;
    // The current row, or the one that a new record is going to be.
    [[nodiscard]] std::size_t recordNumber() const {
        return editMode_ == EditModeEnum::adEditAdd ? table_->size() : currentRow();
    }
    // To a row of the table; raises -2147217906 when the cursor does not show it.
    void goTo(std::size_t row);
    // The rows seen, in order.
    [[nodiscard]] std::vector<std::size_t> rowsShown();
    // The place of a row in the cursor's order; nullopt when it is not shown.
    [[nodiscard]] std::optional<std::size_t> placeOf(std::size_t row) const {
        return view_.placeOf(row);
    }
    // From the current record on, passing over `skip` records, to the first that passes the test;
    // to EOF or BOF when none does.
    void search(const RowTest& test, std::int64_t skip, SearchDirectionEnum direction);
    // Shows other rows or another order and stands on the first of them.
    void arrange(RowFilter filter, const std::vector<SortName>& sort);
    [[nodiscard]] bool isFiltered() const noexcept { return view_.isFiltered(); }

    [[nodiscard]] Variant value(std::size_t column) const;
    [[nodiscard]] Variant originalValue(std::size_t column) const;
    [[nodiscard]] Variant underlyingValue(std::size_t column) const;
    [[nodiscard]] std::string_view bytes(std::size_t column) const;
    void assign(std::size_t column, const Variant& value);
    // Whether the column has been assigned since the record was last saved.
    [[nodiscard]] bool isPending(std::size_t column) const noexcept {
        return !pending_.empty() && pending_[column].has_value();
    }
    void replaceNulls(std::size_t column);
    // What clients ask for to be found faster by a column.
    [[nodiscard]] bool isOptimized(std::size_t column) const { return optimized_.contains(column); }
    void optimize(std::size_t column, bool on) {
        if (on) {
            optimized_.insert(column);
        } else {
            optimized_.erase(column);
        }
    }
    // Unset: nobody is told.
    [[nodiscard]] const std::shared_ptr<FieldObserver>& observer() const noexcept {
        return observer_;
    }
    void setObserver(std::shared_ptr<FieldObserver> observer) noexcept {
        observer_ = std::move(observer);
    }

    [[nodiscard]] EditModeEnum editMode() const noexcept { return editMode_; }
    // Bits of RecordStatusEnum.
    [[nodiscard]] std::int32_t status() const;
    void beginNew();
    void cancel();

    // These write through `session`, or only into the table when there is none.
    void save(Session* session);
    void remove(Session* session);
    void removeRow(Session* session, std::size_t row);
    void requireUpdatable() const;

    // How a row is written, beside what follows from where the cursor is.
    void setWriting(WriteRules rules) { options_.writing = std::move(rules); }
    void setBatch(bool batch) noexcept { options_.batch = batch; }
    // Ends an edit without saving it; raises 3219 for a new record.
    void dropEdit();
    [[nodiscard]] RowWriter writer(Session& session);

private:
    [[nodiscard]] std::int64_t end() const noexcept {
        return static_cast<std::int64_t>(view_.size());
    }
    void finishEdit();
    void requireBackward() const;
    void fetchFor(std::int64_t records);
    void searchOnce(const RowTest& test, std::int64_t skip);
    void saveChanges(Session* session);
    void saveNew(Session* session);

    std::shared_ptr<RowTable> table_;
    UpdatePlans plans_;
    RowView view_;
    Options options_;
    std::int64_t position_ =
        -1;  // a place of the view; -1: before the first; end(): after the last
    EditModeEnum editMode_ = EditModeEnum::adEditNone;
    std::shared_ptr<FieldObserver> observer_;
    std::set<std::size_t> optimized_;
    PendingValues pending_;  // one entry a column while editing; unset: not assigned
};

}  // namespace kap::ado
