#include "ado/row_cursor.hpp"

#include <algorithm>
#include <utility>

#include "ado/cell_value.hpp"
#include "ado/failures.hpp"

namespace kap::ado {
namespace {

std::int32_t bit(FieldAttributeEnum attribute) {
    return static_cast<std::int32_t>(attribute);
}

// Several tables change together or not at all; inside a client's transaction that is the client's
// to decide.
class ChangeGroup {
public:
    ChangeGroup(Session& session, std::size_t changes)
        : session_(changes > 1 && session.transactionDepth() == 0 ? &session : nullptr) {
        if (session_ != nullptr) {
            session_->begin();
        }
    }
    ~ChangeGroup() {
        if (session_ != nullptr) {
            session_->rollback();
        }
    }
    ChangeGroup(const ChangeGroup&) = delete;
    ChangeGroup& operator=(const ChangeGroup&) = delete;

    void commit() {
        if (Session* session = std::exchange(session_, nullptr)) {
            session->commit();
        }
    }

private:
    Session* session_;
};

ChangeOutcome applyOne(Session& session, const RowChange& change) {
    ChangeOutcome outcome = session.apply(change);
    if (outcome.rowsTouched == 0) {
        fail::concurrency();
    }
    return outcome;
}

}  // namespace

RowCursor::RowCursor(Result result, Options options)
    : result_(std::move(result)), options_(options) {
    if (total() > 0) {
        position_ = 0;
    }
}

std::optional<std::size_t> RowCursor::find(std::u16string_view name) const {
    if (byName_.empty()) {
        for (std::size_t i = 0; i < columns().size(); ++i) {
            byName_.emplace(String(columns()[i].name).units(), i);
        }
    }
    const auto found = byName_.find(name);
    return found == byName_.end() ? std::nullopt : std::optional(found->second);
}

std::int32_t RowCursor::attributes(std::size_t column) const {
    const ColumnInfo& info = columns()[column];
    const bool setByDatabase = info.identity || info.rowVersion;
    std::int32_t bits = 0;
    if (options_.location == CursorLocationEnum::adUseClient) {
        bits |= setByDatabase ? 0 : bit(FieldAttributeEnum::adFldUnknownUpdatable);
    } else if (info.writable() && !options_.readOnly) {
        bits |= bit(FieldAttributeEnum::adFldUpdatable);
    }
    bits |= info.fixedLength ? bit(FieldAttributeEnum::adFldFixed) : 0;
    if (info.nullable) {
        bits |= bit(FieldAttributeEnum::adFldIsNullable) | bit(FieldAttributeEnum::adFldMayBeNull);
    }
    if (info.isLong) {
        bits |= bit(FieldAttributeEnum::adFldLong) | bit(FieldAttributeEnum::adFldMayDefer);
    }
    bits |= info.rowVersion ? bit(FieldAttributeEnum::adFldRowVersion) : 0;
    bits |= info.key ? bit(FieldAttributeEnum::adFldKeyColumn) : 0;
    return bits;
}

std::size_t RowCursor::total() const noexcept {
    return result_.rows.empty() ? 0 : result_.rows.front().size();
}

bool RowCursor::isDeleted(std::size_t row) const noexcept {
    return row < deleted_.size() && deleted_[row];
}

std::size_t RowCursor::recordCount() const noexcept {
    return total() - deletedCount_ + (editMode_ == EditModeEnum::adEditAdd ? 1 : 0);
}

// A deleted record stays current until the next movement, so it is neither end.
bool RowCursor::bof() const noexcept {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return false;
    }
    const bool atEnd = position_ == static_cast<std::int64_t>(total());
    return position_ < 0 || (atEnd && recordCount() == 0);
}

bool RowCursor::eof() const noexcept {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return false;
    }
    const bool atEnd = position_ == static_cast<std::int64_t>(total());
    return atEnd || (position_ < 0 && recordCount() == 0);
}

std::int32_t RowCursor::absolutePosition() const noexcept {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return static_cast<std::int32_t>(recordCount());
    }
    if (bof()) {
        return static_cast<std::int32_t>(recordCount() == 0 ? PositionEnum::adPosUnknown
                                                            : PositionEnum::adPosBOF);
    }
    if (eof()) {
        return static_cast<std::int32_t>(PositionEnum::adPosEOF);
    }
    const auto row = static_cast<std::size_t>(position_);
    if (isDeleted(row)) {
        return static_cast<std::int32_t>(PositionEnum::adPosUnknown);
    }
    const auto seen = std::min(row, deleted_.size());
    const auto hidden =
        std::count(deleted_.begin(), deleted_.begin() + static_cast<std::ptrdiff_t>(seen), true);
    return static_cast<std::int32_t>(position_ - hidden + 1);
}

void RowCursor::place(std::int64_t position) {
    position_ = position;
}

void RowCursor::moveFirst() {
    if (recordCount() == 0) {
        fail::noCurrentRecord();
    }
    place(-1);
    move(1);
}

void RowCursor::moveLast() {
    if (recordCount() == 0) {
        fail::noCurrentRecord();
    }
    place(static_cast<std::int64_t>(total()));
    move(-1);
}

void RowCursor::move(std::int64_t records) {
    const auto end = static_cast<std::int64_t>(total());
    const bool nowhereToGo = (records > 0 && position_ == end) || (records < 0 && position_ < 0);
    if (nowhereToGo || (bof() && eof())) {
        fail::noCurrentRecord();
    }
    std::int64_t target = position_;
    if (deletedCount_ == 0) {
        target = std::clamp(records > end - target ? end : target + records, std::int64_t{-1}, end);
    } else {
        const std::int64_t step = records < 0 ? -1 : 1;
        for (std::int64_t left = records;
             left != 0 && target + step >= -1 && target + step <= end;) {
            target += step;
            const bool inside = target >= 0 && target < end;
            left -= inside && isDeleted(static_cast<std::size_t>(target)) ? 0 : step;
        }
    }
    place(target);
}

std::size_t RowCursor::currentRow() const {
    if (bof() || eof()) {
        fail::noCurrentRecord();
    }
    const auto row = static_cast<std::size_t>(position_);
    if (isDeleted(row)) {
        fail::deletedRow();
    }
    return row;
}

Variant RowCursor::value(std::size_t column) const {
    if (!pending_.empty() && pending_[column]) {
        return toVariant(columns()[column], *pending_[column]);
    }
    if (editMode_ == EditModeEnum::adEditAdd) {
        return Variant::null();
    }
    return toVariant(columns()[column], result_.rows[column], currentRow());
}

Variant RowCursor::originalValue(std::size_t column) const {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return Variant::null();
    }
    const ColumnInfo& info = columns()[column];
    return toVariant(info, databaseValue(info, result_.rows[column], currentRow()));
}

std::string_view RowCursor::bytes(std::size_t column) const {
    if (!pending_.empty() && pending_[column]) {
        return std::get<std::string>(*pending_[column]);
    }
    const std::size_t row = currentRow();
    const ColumnStore& store = result_.rows[column];
    return store.cell(row) == ColumnStore::Cell::Value ? store.bytes(row) : std::string_view();
}

void RowCursor::requireUpdatable() const {
    if (options_.readOnly) {
        fail::notUpdatable();
    }
}

void RowCursor::assign(std::size_t column, const Variant& given) {
    requireUpdatable();
    const ColumnInfo& info = columns()[column];
    const bool adding = editMode_ == EditModeEnum::adEditAdd;
    const std::size_t row = adding ? 0 : currentRow();
    CellValue cell = toCell(info, given);
    if (!info.writable()) {
        // The database sets this column. Saying what it holds already changes nothing: a record
        // read whole may be assigned back whole.
        const CellValue held =
            adding ? CellValue{} : databaseValue(info, result_.rows[column], row);
        if (cell != held) {
            fail::doesNotFit(info.name);
        }
        return;
    }
    if (pending_.empty()) {
        pending_.resize(columns().size());
    }
    pending_[column] = std::move(cell);
    if (!adding) {
        editMode_ = EditModeEnum::adEditInProgress;
    }
}

void RowCursor::beginNew() {
    requireUpdatable();
    editMode_ = EditModeEnum::adEditAdd;
    pending_.assign(columns().size(), std::nullopt);
}

void RowCursor::cancel() {
    finishEdit();
}

void RowCursor::finishEdit() {
    editMode_ = EditModeEnum::adEditNone;
    pending_.clear();
}

UpdatePlanner RowCursor::planner(std::size_t row) const {
    return {result_, row, options_.location == CursorLocationEnum::adUseServer};
}

void RowCursor::save(Session* session) {
    if (editMode_ == EditModeEnum::adEditAdd) {
        saveNew(session);
    } else if (editMode_ == EditModeEnum::adEditInProgress) {
        saveChanges(session);
    }
}

void RowCursor::takeReadBack(const RowChange& change, const ChangeOutcome& outcome,
                             PendingValues& values) {
    for (std::size_t i = 0; i < change.readBack.size() && i < outcome.readBack.size(); ++i) {
        for (std::size_t column = 0; column < columns().size(); ++column) {
            const ColumnInfo& info = columns()[column];
            if (info.baseTable == change.table && info.baseColumn == change.readBack[i]) {
                values[column] = outcome.readBack[i];
            }
        }
    }
}

void RowCursor::saveChanges(Session* session) {
    const std::size_t row = currentRow();
    PendingValues values = pending_;
    if (session != nullptr) {
        const std::vector<RowChange> plan = planner(row).updates(pending_);
        ChangeGroup group(*session, plan.size());
        for (const RowChange& change : plan) {
            takeReadBack(change, applyOne(*session, change), values);
        }
        group.commit();
    }
    for (std::size_t column = 0; column < values.size(); ++column) {
        if (values[column]) {
            put(result_.rows[column], row, *values[column]);
        }
    }
    finishEdit();
}

void RowCursor::saveNew(Session* session) {
    PendingValues values = pending_;
    if (session != nullptr) {
        const RowChange change = planner(0).insertion(pending_);
        takeReadBack(change, applyOne(*session, change), values);
    }
    for (std::size_t column = 0; column < values.size(); ++column) {
        append(result_.rows[column], values[column].value_or(CellValue{}));
    }
    finishEdit();
    place(static_cast<std::int64_t>(total()) - 1);
}

void RowCursor::remove(Session* session) {
    requireUpdatable();
    if (editMode_ == EditModeEnum::adEditAdd) {
        fail::illegalOperation();
    }
    const std::size_t row = currentRow();
    finishEdit();
    if (session != nullptr) {
        applyOne(*session, planner(row).deletion());
    }
    markDeleted(row);
}

void RowCursor::markDeleted(std::size_t row) {
    deleted_.resize(total());
    deleted_[row] = true;
    ++deletedCount_;
}

void RowCursor::reload(Session& session) {
    if (editMode_ == EditModeEnum::adEditAdd) {
        fail::illegalOperation();
    }
    const std::size_t row = currentRow();
    finishEdit();
    reloadRow(session, row);
}

void RowCursor::reloadAll(Session& session) {
    if (editMode_ == EditModeEnum::adEditAdd) {
        fail::illegalOperation();
    }
    finishEdit();
    for (std::size_t row = 0; row < total(); ++row) {
        if (!isDeleted(row)) {
            reloadRow(session, row);
        }
    }
}

void RowCursor::reloadRow(Session& session, std::size_t row) {
    PendingValues values(columns().size());
    for (const RowChange& change : planner(row).reads()) {
        const ChangeOutcome outcome = session.apply(change);
        if (outcome.rowsTouched == 0) {
            markDeleted(row);
            fail::rowGone();
        }
        takeReadBack(change, outcome, values);
    }
    for (std::size_t column = 0; column < values.size(); ++column) {
        if (values[column]) {
            put(result_.rows[column], row, *values[column]);
        }
    }
}

std::size_t RowCursor::memory() const noexcept {
    std::size_t bytes = 0;
    for (const ColumnStore& store : result_.rows) {
        bytes += store.memory();
    }
    return bytes;
}

}  // namespace kap::ado
