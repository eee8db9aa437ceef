#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include <kaputil/ado/recordset.hpp>

#include "ado/event_calls.hpp"
#include "ado/row_cursor.hpp"

namespace kap::ado {

// The events of a recordset around what is done to it. Before and after the work a sink may do
// anything, close the recordset, too: the work begins by looking whether it still can be done.
class RecordsetNotices {
public:
    explicit RecordsetNotices(Recordset& recordset);

    void aroundMove(EventReasonEnum reason, const std::function<void()>& work) const;
    void aroundRecords(EventReasonEnum reason, std::size_t count,
                       const std::function<void()>& work) const;
    void aroundField(std::size_t column, const std::function<void()>& work) const;
    // There is nothing yet that a sink could look at before.
    void afterOpening(const std::function<void()>& open) const;
    void aroundAll(EventReasonEnum reason, const std::function<void()>& work) const;
    // Takes rows that have come in the background: what it tells when they do not come, and when
    // they have.
    void fetching(const std::function<void()>& take) const;
    void fetched(std::size_t rows, std::size_t all, bool complete) const;

private:
    void move(const std::function<void()>& work) const;

    Ref<Recordset> recordset_;  // a sink may drop the client's reference
    EventCalls calls_;
};

// Moves to another record.
template <class Work>
void moving(Recordset& recordset, EventReasonEnum reason, const Work& work) {
    const auto fetching = [&] {
        if (recordset.fetches()) {
            recordset.reportingFetch(work);
        } else {
            work();
        }
    };
    if (recordset.isObserved()) {
        RecordsetNotices(recordset).aroundMove(reason, fetching);
    } else {
        fetching();
    }
    recordset.takeReady();
}

// Adds, writes or deletes records, or forgets their changes.
template <class Work>
void changingRecords(Recordset& recordset, EventReasonEnum reason, std::size_t count,
                     const Work& work) {
    if (recordset.isObserved()) {
        RecordsetNotices(recordset).aroundRecords(reason, count, work);
    } else {
        work();
    }
}

// Gives the recordset other records.
template <class Work>
void changingAll(Recordset& recordset, EventReasonEnum reason, const Work& work) {
    if (recordset.isObserved()) {
        RecordsetNotices(recordset).aroundAll(reason, work);
    } else {
        work();
    }
}

// Raises the events of fields, which know their cursor and not their recordset.
class FieldNotices final : public FieldObserver {
public:
    explicit FieldNotices(Recordset& recordset) : recordset_(&recordset) {}
    void assigning(std::size_t column, const std::function<void()>& assign) override;
    // The recordset is gone; its fields may be there still.
    void forget() noexcept { recordset_ = nullptr; }

private:
    Recordset* recordset_;
};

}  // namespace kap::ado
