#include <cstddef>

#include "engine/executor/statement_runner.hpp"
#include "engine/plan/capture.hpp"
#include "engine/sqlite/time_limit.hpp"

// How statements fire triggers. Of one that a trigger fires instead of, the rows are put where the
// trigger looks for them, and nothing is written.
namespace kap::engine {

namespace {

// What the statement needs beside the caught rows, for as long as it runs.
class HelpingTables {
public:
    HelpingTables(sqlite3* database, const InsteadPlan& plan) : database_(database), plan_(plan) {
        for (const std::string& sql : plan.make)
            PreparedStatement(database, sql).run();
    }
    HelpingTables(const HelpingTables&) = delete;
    HelpingTables& operator=(const HelpingTables&) = delete;
    ~HelpingTables() {
        const TimeLimit::Pause whole;
        for (const std::string& sql : plan_.remove)
            sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr);
    }

private:
    sqlite3* database_;
    const InsteadPlan& plan_;
};

}  // namespace

void StatementRunner::writeInstead(const Translation& made, std::vector<ado::Result>& results) {
    // What the trigger does may make the translation anew.
    const std::shared_ptr<const InsteadPlan> plan = made.instead;
    const Translation kept = made;
    captures_.ensureRows(plan->shape);
    std::int64_t count = 0;
    {
        const HelpingTables tables(connection_.handle(), *plan);
        for (const std::string& sql : plan->fill) {
            runText(kept, sql);
            count = connection_.database().changes();
        }
    }
    (void)counters_.takeLastIdentity();
    state_.rowCount = count;
    fire(plan->shape, {plan->shape.name, plan->event, plan->columns, true}, results);
    for (const std::string& rows : captureNames(plan->shape).tables)
        PreparedStatement(connection_.handle(), "DELETE FROM temp." + sqlName(rows)).run();
    state_.rowCount = count;
    addCount(results);
}

void StatementRunner::fire(const Table& table, const FiringTrigger& trigger,
                           std::vector<ado::Result>& results) {
    const Transactions::ImplicitScope transaction(transactions_);
    triggers_.fire(table, trigger, results);
    if (transactions_.depth() == 0) {
        throw tsql::ServerError(tsql::Message::TransactionEndedInTrigger);
    }
    if (state_.doomed) {
        throw tsql::ServerError(tsql::Message::ErrorInTrigger);
    }
}

// What a statement writes depends on the triggers that are running.
bool StatementRunner::fitsFiring(const Translation& made) const {
    if (made.insteadOfEvent != 0) {
        const bool instead = catalogue_.firesInstead(made.relation, made.insteadOfEvent);
        if (instead != (made.instead != nullptr)) return false;
    }
    const bool catches = made.capture || made.merge != nullptr || made.instead != nullptr;
    if (!catches || made.temporary) return true;
    return made.captureLevel == catalogue_.firingLevel(made.table);
}

bool StatementRunner::fires(const Table& table, std::uint8_t event) const {
    if ((table.triggerEvents & event) == 0) return false;
    for (const std::uint8_t each : {tsql::kOnInsert, tsql::kOnUpdate, tsql::kOnDelete}) {
        if ((event & each) != 0 && !catalogue_.firedBy(table.name, each, false).empty())
            return true;
    }
    return false;
}

}  // namespace kap::engine
