#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kaputil/ado/enumerations.hpp>
#include <kaputil/frame/variant.hpp>

#include "ado/driver.hpp"
#include "ado/update_plan.hpp"
#include "frame/unicode.hpp"

namespace kap::ado {

// The rows of an open recordset: the fetched columns, the current position, and the record that is
// being edited. Fields and recordset share it.
//
// What was fetched and what is pending are kept apart until the database has taken the change: the
// fetched values are what an optimistic update must find.
class RowCursor {
public:
    struct Options {
        CursorLocationEnum location = CursorLocationEnum::adUseClient;
        bool readOnly = false;
    };

    RowCursor(Result result, Options options);

    [[nodiscard]] const std::vector<ColumnInfo>& columns() const noexcept {
        return result_.columns;
    }
    // The first column with this name, compared ignoring case.
    [[nodiscard]] std::optional<std::size_t> find(std::u16string_view name) const;
    // Bits of FieldAttributeEnum.
    [[nodiscard]] std::int32_t attributes(std::size_t column) const;

    [[nodiscard]] bool bof() const noexcept;
    [[nodiscard]] bool eof() const noexcept;
    [[nodiscard]] std::size_t recordCount() const noexcept;
    [[nodiscard]] std::int32_t absolutePosition() const noexcept;
    void moveFirst();
    void moveLast();
    // `records` forward or, when negative, back from the current one; ends at EOF or BOF.
    void move(std::int64_t records);

    [[nodiscard]] Variant value(std::size_t column) const;
    [[nodiscard]] Variant originalValue(std::size_t column) const;
    [[nodiscard]] std::string_view bytes(std::size_t column) const;
    void assign(std::size_t column, const Variant& value);
    void replaceNulls(std::size_t column) { result_.rows[column].replaceNulls(); }

    [[nodiscard]] EditModeEnum editMode() const noexcept { return editMode_; }
    void beginNew();
    void cancel();

    // These write through `session`, or only into the rows when there is none.
    void save(Session* session);
    void remove(Session* session);
    // Read the current record, or every one, again.
    void reload(Session& session);
    void reloadAll(Session& session);

    [[nodiscard]] std::size_t memory() const noexcept;

private:
    [[nodiscard]] std::size_t total() const noexcept;
    [[nodiscard]] bool isDeleted(std::size_t row) const noexcept;
    [[nodiscard]] std::size_t currentRow() const;
    [[nodiscard]] UpdatePlanner planner(std::size_t row) const;
    void requireUpdatable() const;
    void place(std::int64_t position);
    void markDeleted(std::size_t row);
    void finishEdit();
    void saveChanges(Session* session);
    void saveNew(Session* session);
    void reloadRow(Session& session, std::size_t row);
    void takeReadBack(const RowChange& change, const ChangeOutcome& outcome, PendingValues& values);

    Result result_;
    Options options_;
    mutable std::unordered_map<std::u16string, std::size_t, unicode::NameHash, unicode::NameEqual>
        byName_;                  // made on the first look-up
    std::int64_t position_ = -1;  // -1: before the first row; total(): after the last
    std::vector<bool> deleted_;   // empty until a row is deleted
    std::size_t deletedCount_ = 0;
    EditModeEnum editMode_ = EditModeEnum::adEditNone;
    PendingValues pending_;  // one entry a column while editing; unset: not assigned
};

}  // namespace kap::ado
