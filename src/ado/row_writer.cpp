#include "ado/row_writer.hpp"

#include <utility>
#include <vector>

#include "data/failures.hpp"

namespace kap::ado {
namespace {

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
        if (session_ == nullptr) {
            return;
        }
        try {
            session_->rollback();
        } catch (...) {
            // Deliberate: the client is told why the change failed. A session that cannot even go
            // back is lost, and its transaction with it.
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

void takeReadBack(const TablePlan& plan, const ChangeOutcome& outcome, PendingValues& values) {
    for (const TablePlan::Taken& taken : plan.taken) {
        if (taken.answer < outcome.readBack.size()) {
            values[taken.column] = outcome.readBack[taken.answer];
        }
    }
}

}  // namespace

RowChange RowWriter::changeOf(const TablePlan& plan, std::size_t row,
                              const PendingValues& values) const {
    RowChange change{plan.plan};
    change.values.reserve(plan.values.size());
    for (const std::size_t column : plan.values) {
        change.values.push_back(*values[column]);
    }
    change.criteria.reserve(plan.criteria.size());
    for (const std::size_t column : plan.criteria) {
        change.criteria.push_back(table_.underlying(row, column));
    }
    return change;
}

ChangeOutcome RowWriter::write(const RowChange& change) const {
    ChangeOutcome outcome = session_.apply(change);
    if (outcome.rowsTouched == 0) {
        fail::concurrency();
    }
    return outcome;
}

PendingValues RowWriter::update(std::size_t row, const PendingValues& changes) const {
    PendingValues values = changes;
    const UpdatePlans::Plans plans = plans_.updates(changes, rules_);
    ChangeGroup group(session_, plans->size());
    for (const TablePlan& plan : *plans) {
        takeReadBack(plan, write(changeOf(plan, row, changes)), values);
    }
    group.commit();
    for (std::size_t column = 0; column < values.size(); ++column) {
        if (!changes[column] && values[column] == table_.original(row, column)) {
            values[column].reset();  // a Null that reads as a neutral value goes on doing so
        }
    }
    return values;
}

PendingValues RowWriter::insert(const PendingValues& values) const {
    PendingValues written = values;
    const UpdatePlans::Plans plans = plans_.insertion(values, rules_);
    const TablePlan& plan = plans->front();
    takeReadBack(plan, write(changeOf(plan, 0, values)), written);
    return written;
}

void RowWriter::remove(std::size_t row) const {
    static_cast<void>(write(changeOf(plans_.deletion(rules_)->front(), row, {})));
}

PendingValues RowWriter::read(std::size_t row) const {
    PendingValues values(table_.columns().size());
    const UpdatePlans::Plans plans = plans_.reads(rules_);
    for (const TablePlan& plan : *plans) {
        const ChangeOutcome outcome = session_.apply(changeOf(plan, row, {}));
        if (outcome.rowsTouched == 0) {
            fail::rowGone();
        }
        takeReadBack(plan, outcome, values);
    }
    return values;
}

}  // namespace kap::ado
