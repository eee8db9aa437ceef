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

ChangeOutcome applyOne(Session& session, const RowChange& change) {
    ChangeOutcome outcome = session.apply(change);
    if (outcome.rowsTouched == 0) {
        fail::concurrency();
    }
    return outcome;
}

}  // namespace

UpdatePlanner RowWriter::planner(std::size_t row) const {
    return {table_, row, check_};
}

PendingValues RowWriter::update(std::size_t row, const PendingValues& changes) const {
    PendingValues values = changes;
    const std::vector<RowChange> plan = planner(row).updates(changes);
    ChangeGroup group(session_, plan.size());
    for (const RowChange& change : plan) {
        takeReadBack(change, applyOne(session_, change), values);
    }
    group.commit();
    return values;
}

PendingValues RowWriter::insert(const PendingValues& values) const {
    PendingValues written = values;
    const RowChange change = planner(0).insertion(values);
    takeReadBack(change, applyOne(session_, change), written);
    return written;
}

void RowWriter::remove(std::size_t row) const {
    applyOne(session_, planner(row).deletion());
}

PendingValues RowWriter::read(std::size_t row) const {
    PendingValues values(table_.columns().size());
    for (const RowChange& change : planner(row).reads()) {
        const ChangeOutcome outcome = session_.apply(change);
        if (outcome.rowsTouched == 0) {
            fail::rowGone();
        }
        takeReadBack(change, outcome, values);
    }
    return values;
}

void RowWriter::takeReadBack(const RowChange& change, const ChangeOutcome& outcome,
                             PendingValues& values) const {
    for (std::size_t i = 0; i < change.readBack.size() && i < outcome.readBack.size(); ++i) {
        for (std::size_t column = 0; column < table_.columns().size(); ++column) {
            const ColumnInfo& info = table_.columns()[column];
            if (info.baseTable == change.table && info.baseColumn == change.readBack[i]) {
                values[column] = outcome.readBack[i];
            }
        }
    }
}

}  // namespace kap::ado
