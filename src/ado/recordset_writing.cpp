// Changing records and writing them to the database.
#include <functional>
#include <utility>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>

#include "ado/batch.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/row_cursor.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

// Names and values come as one of each, or as two arrays of the same length.
std::vector<Variant> elementsOf(const Variant& value) {
    if (!value.isArray()) {
        return {value};
    }
    std::vector<Variant> all;
    const Array& array = value.as<Array>();
    for (std::int32_t i = array.lowerBound(); i <= array.upperBound(); ++i) {
        all.push_back(array.at(i));
    }
    return all;
}

}  // namespace

EditModeEnum Recordset::EditMode() const {
    const EditModeEnum mode = opened().editMode();
    if (mode == EditModeEnum::adEditAdd) {
        return mode;
    }
    const RowTable& table = cursor_->table();
    const std::size_t row = cursor_->currentPlaceRow();
    if (table.isDeleted(row)) {
        return EditModeEnum::adEditDelete;
    }
    return table.isNew(row) ? EditModeEnum::adEditAdd : mode;
}

std::int32_t Recordset::Status() const {
    return opened().status();
}

void Recordset::AddNew(const Variant& fieldList, const Variant& values) {
    savePending();
    moving(*this, EventReasonEnum::adRsnMove, [&] {
        changingRecords(*this, EventReasonEnum::adRsnAddNew, 1, [&] { opened().beginNew(); });
    });
    if (!fieldList.isMissing()) {
        assignAll(fieldList, values);
        save();
    }
}

void Recordset::Update(const Variant& fields, const Variant& values) {
    requireOpen();
    if (!fields.isMissing()) {
        assignAll(fields, values);
    }
    save();
}

void Recordset::assignAll(const Variant& names, const Variant& values) {
    if (values.isMissing()) {
        fail::invalidArgument();
    }
    const std::vector<Variant> columns = elementsOf(names);
    const std::vector<Variant> given = elementsOf(values);
    if (columns.size() != given.size()) {
        fail::invalidArgument();
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        fields_->Item(columns[i])->setValue(given[i]);
    }
}

// Leaving a record saves what was changed in it.
void Recordset::savePending() {
    if (opened().editMode() != EditModeEnum::adEditNone) {
        save();
    }
}

void Recordset::save() {
    if (opened().editMode() == EditModeEnum::adEditNone) {
        saveNow();
        return;
    }
    changingRecords(*this, EventReasonEnum::adRsnUpdate, 1, [&] { saveNow(); });
}

void Recordset::saveNow() {
    requireOpen();
    if (!connection_ || cursor_->options().batch) {
        cursor_->save(nullptr);
        return;
    }
    connection_->working([&](Session& session) { cursor_->save(&session); });
}

void Recordset::CancelUpdate() {
    const EditModeEnum mode = opened().editMode();
    if (mode == EditModeEnum::adEditNone) {
        return;
    }
    const EventReasonEnum reason = mode == EditModeEnum::adEditAdd
                                       ? EventReasonEnum::adRsnUndoAddNew
                                       : EventReasonEnum::adRsnUndoUpdate;
    changingRecords(*this, reason, 1, [&] { opened().cancel(); });
}

// The rows that a member is to work on. All are those that criteria show, or every one.
std::vector<std::size_t> Recordset::affectedRows(AffectEnum which) const {
    switch (which) {
        case AffectEnum::adAffectCurrent:
            return {cursor_->currentPlaceRow()};
        case AffectEnum::adAffectGroup:
            if (!cursor_->isFiltered()) {
                fail::invalidArgument();
            }
            return cursor_->rowsShown();
        case AffectEnum::adAffectAll:
            if (filter_.isString() && cursor_->isFiltered()) {
                return cursor_->rowsShown();
            }
            break;
        case AffectEnum::adAffectAllChapters:
            break;
        default:
            fail::invalidArgument();
    }
    return cursor_->table().rowsKept();
}

// How many records that is, for who is told of it before; none when the member is going to refuse.
std::size_t Recordset::affectedCount(AffectEnum which) const {
    if (which == AffectEnum::adAffectCurrent) {
        return 1;
    }
    std::vector<std::size_t> rows = affectedRows(which);
    std::erase_if(rows, [&](std::size_t row) { return cursor_->table().isDeleted(row); });
    return rows.size();
}

// Those of them that wait for a batch update.
std::size_t Recordset::waitingCount(AffectEnum which) const {
    std::vector<std::size_t> rows = affectedRows(which);
    std::erase_if(rows, [&](std::size_t row) { return cursor_->table().pending(row) == nullptr; });
    return rows.size();
}

void Recordset::Delete(AffectEnum affectRecords) {
    requireOpen();
    const std::size_t count = isObserved() ? affectedCount(affectRecords) : 0;
    changingRecords(*this, EventReasonEnum::adRsnDelete, count, [&] { deleteNow(affectRecords); });
}

void Recordset::deleteNow(AffectEnum affectRecords) {
    requireOpen();
    if (connection_ && !cursor_->options().batch) {
        connection_->working([&](Session& session) { deleteThrough(&session, affectRecords); });
    } else {
        deleteThrough(nullptr, affectRecords);
    }
}

void Recordset::deleteThrough(Session* session, AffectEnum affectRecords) {
    if (affectRecords == AffectEnum::adAffectCurrent) {
        cursor_->remove(session);
        return;
    }
    cursor_->requireUpdatable();
    cursor_->dropEdit();
    for (const std::size_t row : affectedRows(affectRecords)) {
        if (!cursor_->table().isDeleted(row)) {
            cursor_->removeRow(session, row);
        }
    }
}

void Recordset::requireBatch() const {
    if (!opened().options().batch) {
        fail::notAvailable(
            u"Current Recordset does not support batch updating: its LockType is not "
            u"adLockBatchOptimistic.");
    }
}

void Recordset::UpdateBatch(AffectEnum affectRecords) {
    requireBatch();
    savePending();
    if (!connection_) {
        fail::invalidConnection();
    }
    const std::size_t count = isObserved() ? waitingCount(affectRecords) : 0;
    changingRecords(*this, EventReasonEnum::adRsnUpdate, count, [&] {
        requireBatch();
        raisingAll([&](Session& session) {
            return updateBatch(*cursor_, session, affectedRows(affectRecords));
        });
    });
}

void Recordset::CancelBatch(AffectEnum affectRecords) {
    requireBatch();
    const std::size_t count = isObserved() ? waitingCount(affectRecords) : 0;
    changingRecords(*this, EventReasonEnum::adRsnUndoUpdate, count, [&] {
        requireBatch();
        cursor_->cancel();
        cancelBatch(*cursor_, affectedRows(affectRecords));
    });
}

void Recordset::Resync(AffectEnum affectRecords, ResyncEnum resyncValues) {
    requireOpen();
    if (resyncValues != ResyncEnum::adResyncAllValues &&
        resyncValues != ResyncEnum::adResyncUnderlyingValues) {
        fail::invalidArgument();
    }
    if (!connection_) {
        fail::invalidConnection();
    }
    changingAll(*this, EventReasonEnum::adRsnResynch,
                [&] { resyncNow(affectRecords, resyncValues); });
}

void Recordset::resyncNow(AffectEnum affectRecords, ResyncEnum resyncValues) {
    requireOpen();
    if (resyncValues == ResyncEnum::adResyncAllValues) {
        cursor_->dropEdit();
    }
    const std::vector<std::size_t> rows = affectRecords == AffectEnum::adAffectCurrent
                                              ? std::vector<std::size_t>{cursor_->currentRow()}
                                              : affectedRows(affectRecords);
    raisingAll([&](Session& session) { return resync(*cursor_, session, rows, resyncValues); });
}

// For work on several rows, each of which may fail for itself.
void Recordset::raisingAll(const std::function<std::vector<DriverError>(Session&)>& work) {
    std::vector<DriverError> failures;
    connection_->working([&](Session& session) { failures = work(session); });
    if (!failures.empty()) {
        connection_->raiseAll(failures);
    }
}

void Recordset::replaceNulls(std::size_t field) {
    if (field >= opened().columns().size()) {
        fail::itemNotFound();
    }
    cursor_->replaceNulls(field);
}

}  // namespace kap::ado
