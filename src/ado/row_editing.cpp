// The values of a cursor's current record: reading, editing and saving them.
#include <utility>

#include "ado/row_cursor.hpp"
#include "data/cell_value.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

std::int32_t bit(FieldAttributeEnum attribute) {
    return static_cast<std::int32_t>(attribute);
}

// The entry of a row that waits for a batch update.
PendingRow& pendingRow(RowTable& table, std::size_t row, PendingRow::Kind kind) {
    const auto known = table.pending().find(row);
    if (known != table.pending().end()) {
        return known->second;
    }
    PendingRow waiting;
    waiting.kind = kind;
    waiting.original.resize(table.columns().size());
    return table.pending().emplace(row, std::move(waiting)).first->second;
}

}  // namespace

std::int32_t RowCursor::attributes(std::size_t column) const {
    const ColumnInfo& info = columns()[column];
    if (info.givenAttributes) {
        return *info.givenAttributes;
    }
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

Variant RowCursor::value(std::size_t column) const {
    if (!pending_.empty() && pending_[column]) {
        return toVariant(columns()[column], *pending_[column]);
    }
    if (editMode_ == EditModeEnum::adEditAdd) {
        // There is no database that would put a default there.
        return table_->isMadeByHand() ? Variant() : Variant::null();
    }
    return toVariant(columns()[column], table_->store(column), currentRow());
}

Variant RowCursor::originalValue(std::size_t column) const {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return Variant::null();
    }
    return toVariant(columns()[column], table_->original(currentPlaceRow(), column));
}

Variant RowCursor::underlyingValue(std::size_t column) const {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return Variant::null();
    }
    return toVariant(columns()[column], table_->underlying(currentPlaceRow(), column));
}

std::string_view RowCursor::bytes(std::size_t column) const {
    if (!pending_.empty() && pending_[column]) {
        const std::string* bytes = bytesOf(*pending_[column]);
        return bytes == nullptr ? std::string_view() : std::string_view(*bytes);
    }
    const std::size_t row = currentRow();
    const ColumnStore& store = table_->store(column);
    return store.cell(row) == ColumnStore::Cell::Filled ? store.bytes(row) : std::string_view();
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
    Value cell = toCell(info, given);
    if (!info.writable()) {
        // The database sets this column. Saying what it holds already changes nothing: a record
        // read whole may be assigned back whole.
        const Value held = adding ? Value{} : table_->original(row, column);
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

// A cursor on the server shows its row as it stands there.
RowWriter RowCursor::writer(Session& session) {
    const bool onServer = options_.location == CursorLocationEnum::adUseServer;
    WriteRules rules = options_.writing;
    rules.checksVersion = onServer;
    rules.readsWhole = rules.readsWhole || onServer;
    return {*table_, session, plans_, std::move(rules)};
}

void RowCursor::replaceNulls(std::size_t column) {
    table_->replaceNulls(column);
}

std::int32_t RowCursor::status() const {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return static_cast<std::int32_t>(RecordStatusEnum::adRecNew);
    }
    const std::size_t row = currentPlaceRow();
    const bool changed = editMode_ == EditModeEnum::adEditInProgress;
    if (changed && table_->pending(row) == nullptr) {
        return static_cast<std::int32_t>(RecordStatusEnum::adRecModified);
    }
    return table_->status(row);
}

void RowCursor::beginNew() {
    requireUpdatable();
    table_->fetchAll();
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

void RowCursor::dropEdit() {
    if (editMode_ == EditModeEnum::adEditAdd) {
        fail::illegalOperation();
    }
    finishEdit();
}

void RowCursor::save(Session* session) {
    if (editMode_ == EditModeEnum::adEditAdd) {
        saveNew(session);
    } else if (editMode_ == EditModeEnum::adEditInProgress) {
        saveChanges(session);
    }
}

void RowCursor::saveChanges(Session* session) {
    const std::size_t row = currentRow();
    PendingValues values = pending_;
    table_->makeRoom(values, 0);
    if (options_.batch) {
        PendingRow& waiting = pendingRow(*table_, row, PendingRow::Kind::Modified);
        for (std::size_t column = 0; column < values.size(); ++column) {
            if (values[column] && !waiting.original[column]) {
                waiting.original[column] =
                    databaseValue(columns()[column], table_->store(column), row);
            }
        }
    } else if (session != nullptr) {
        values = writer(*session).update(row, pending_);
        table_->forgetUnderlying(row);
    }
    table_->put(row, values);
    finishEdit();
    view_.rowChanged(static_cast<std::size_t>(position_));
}

void RowCursor::saveNew(Session* session) {
    PendingValues values = pending_;
    table_->makeRoom(values, 1);
    view_.makeRoom();
    if (session != nullptr && !options_.batch) {
        values = writer(*session).insert(pending_);
    }
    const std::size_t row = table_->size();
    if (options_.batch) {
        pendingRow(*table_, row, PendingRow::Kind::New);
    }
    table_->append(values);
    finishEdit();
    view_.takeNewRows();
    position_ = end() - 1;
}

void RowCursor::remove(Session* session) {
    requireUpdatable();
    if (editMode_ == EditModeEnum::adEditAdd) {
        fail::illegalOperation();
    }
    const std::size_t row = currentRow();
    finishEdit();
    removeRow(session, row);
}

void RowCursor::removeRow(Session* session, std::size_t row) {
    if (table_->isGradual()) {
        table_->fetchAll();
    }
    table_->makeRoomForDeletion();
    if (options_.batch) {
        PendingRow& waiting = pendingRow(*table_, row, PendingRow::Kind::Deleted);
        if (waiting.kind == PendingRow::Kind::New) {
            table_->pending().erase(row);  // the database never saw it
        } else {
            waiting.kind = PendingRow::Kind::Deleted;
        }
    } else if (session != nullptr) {
        writer(*session).remove(row);
    }
    table_->setDeleted(row, true);
}

}  // namespace kap::ado
