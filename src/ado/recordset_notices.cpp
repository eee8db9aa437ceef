#include "ado/recordset_notices.hpp"

#include <kaputil/automation/array.hpp>

#include "data/failures.hpp"

namespace kap::ado {
namespace {

Variant ofReason(EventReasonEnum reason) {
    return static_cast<std::int32_t>(reason);
}

}  // namespace

RecordsetNotices::RecordsetNotices(Recordset& recordset)
    : recordset_(&recordset), calls_(recordset, Variant(recordset_), &fail::cancelled) {}

void RecordsetNotices::aroundMove(EventReasonEnum reason, const std::function<void()>& work) const {
    calls_.around(u"WillMove", u"MoveComplete", {ofReason(reason)}, [&] { move(work); });
}

void RecordsetNotices::move(const std::function<void()>& work) const {
    const auto atEnd = [&] {
        return recordset_->State() == ObjectStateEnum::adStateOpen && recordset_->Eof() &&
               !recordset_->Bof();
    };
    const bool before = recordset_->State() == ObjectStateEnum::adStateOpen && !recordset_->Eof();
    work();
    if (before && atEnd()) {
        EventCalls::Values moreData = {Variant(false)};
        calls_.tell(u"EndOfRecordset", moreData, EventStatusEnum::adStatusOK);
    }
}

void RecordsetNotices::aroundRecords(EventReasonEnum reason, std::size_t count,
                                     const std::function<void()>& work) const {
    calls_.around(u"WillChangeRecord", u"RecordChangeComplete",
                  {ofReason(reason), Variant(static_cast<std::int32_t>(count))}, work);
}

void RecordsetNotices::aroundField(std::size_t column, const std::function<void()>& work) const {
    const Variant field(recordset_->Fields()->Item(static_cast<std::int32_t>(column)));
    calls_.around(u"WillChangeField", u"FieldChangeComplete",
                  {Variant(std::int32_t{1}), Array::ofVariants({field})}, work);
}

void RecordsetNotices::afterOpening(const std::function<void()>& open) const {
    const auto reason = [] { return EventCalls::Values{ofReason(EventReasonEnum::adRsnRequery)}; };
    calls_.completing(u"RecordsetChangeComplete", reason, [&] {
        open();
        EventCalls::Values moved = reason();
        moved.emplace_back(Ref<Object>());
        calls_.tell(u"MoveComplete", moved, EventStatusEnum::adStatusOK);
    });
}

void RecordsetNotices::fetching(const std::function<void()>& take) const {
    calls_.beginning(
        u"FetchComplete", [] { return EventCalls::Values(); }, take);
}

// How many there are going to be is known when they are all here.
void RecordsetNotices::fetched(std::size_t rows, std::size_t all, bool complete) const {
    const Variant count(static_cast<std::int32_t>(all));
    if (rows > 0) {
        EventCalls::Values progress = {count, count};
        calls_.tell(u"FetchProgress", progress, EventStatusEnum::adStatusOK);
    }
    if (complete) {
        EventCalls::Values noError = {Ref<Object>()};
        calls_.tell(u"FetchComplete", noError, EventStatusEnum::adStatusOK);
    }
}

void RecordsetNotices::aroundAll(EventReasonEnum reason, const std::function<void()>& work) const {
    const EventStatusEnum asked = reason == EventReasonEnum::adRsnClose
                                      ? EventStatusEnum::adStatusCantDeny
                                      : EventStatusEnum::adStatusOK;
    calls_.around(u"WillChangeRecordset", u"RecordsetChangeComplete", {ofReason(reason)}, work,
                  asked);
}

void FieldNotices::assigning(std::size_t column, const std::function<void()>& assign) {
    if (recordset_ == nullptr || !recordset_->isObserved()) {
        assign();
        return;
    }
    const RecordsetNotices notices(*recordset_);
    const auto change = [&] { notices.aroundField(column, assign); };
    if (recordset_->rows().editMode() == EditModeEnum::adEditNone) {
        notices.aroundRecords(EventReasonEnum::adRsnFirstChange, 1, change);
    } else {
        change();
    }
}

}  // namespace kap::ado
