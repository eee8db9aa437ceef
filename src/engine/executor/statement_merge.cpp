#include <algorithm>

#include "engine/executor/statement_runner.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/capture.hpp"
#include "engine/sqlite/time_limit.hpp"

// MERGE: finds the rows of all its actions, writes them, and tells OUTPUT and the triggers.
namespace kap::engine {

namespace {

// The tables of a MERGE, for as long as it runs. The transaction that ends with an error takes them
// with it.
class MergeTables {
public:
    MergeTables(sqlite3* database, const MergePlan& plan) : database_(database), plan_(plan) {
        for (const std::string& sql : plan.make) {
            PreparedStatement(database, sql).run();
        }
    }
    MergeTables(const MergeTables&) = delete;
    MergeTables& operator=(const MergeTables&) = delete;
    ~MergeTables() {
        const TimeLimit::Pause whole;
        for (const std::string& sql : plan_.remove) {
            sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr);
        }
    }

private:
    sqlite3* database_;
    const MergePlan& plan_;
};

constexpr const char* actionOf(std::uint8_t event) {
    return event == tsql::kOnInsert ? "INSERT" : event == tsql::kOnUpdate ? "UPDATE" : "DELETE";
}

}  // namespace

void StatementRunner::runText(const Translation& made, const std::string& sql) {
    PreparedStatement statement(connection_.handle(), sql);
    bind(made, statement);
    statement.run();
}

// Writes the found rows; the answer is how many there were.
std::int64_t StatementRunner::mergeRows(const Translation& made, bool captures) {
    std::int64_t count = 0;
    bool inserted = false;
    for (const MergeStep& step : made.merge->steps) {
        runText(made, step.sql);
        const std::int64_t changes = connection_.database().changes();
        count += changes;
        inserted = inserted || (step.event == tsql::kOnInsert && changes > 0);
        if (!captures) continue;
        runText(made, step.keep);
        captures_.empty(tableOf(made));
    }
    noteIdentity(inserted ? StatementKind::Insert : StatementKind::Merge);
    return count;
}

void StatementRunner::merge(const Translation& made, std::vector<ado::Result>& results) {
    // What is done within its triggers may make the translation anew.
    const std::shared_ptr<const MergePlan> plan = made.merge;
    const Table table = tableOf(made);
    const std::uint8_t events = made.capture ? made.capture->event : 0;
    const bool firing = made.capture && made.capture->forTriggers && fires(table, events);
    const bool answers = made.capture && !made.capture->outputSql.empty();
    const bool captures = firing || answers;
    if (captures) captures_.ensure(table);
    const MergeTables tables(connection_.handle(), *plan);
    for (const std::string& sql : plan->find) {
        runText(made, sql);
    }
    if (!plan->limit.empty()) runText(made, plan->limit);
    const bool repeated =
        !plan->repeated.empty() && PreparedStatement(connection_.handle(), plan->repeated).step();
    if (repeated) {
        throw tsql::ServerError(tsql::Message::MergeTouchedRowTwice);
    }
    std::int64_t count = 0;
    const auto write = [&] { count = mergeRows(made, captures); };
    const auto explained = [&] {
        try {
            write();
        } catch (const SqliteError& error) {
            if (error.code() != SQLITE_CONSTRAINT_FOREIGNKEY) throw;
            throw ForeignKeySearch(connection_, catalogue_)
                .find({verbOf(made.kind), made.table, {}}, write);
        }
    };
    if (captures) {
        catching(table, explained);
    } else {
        explained();
    }
    if (answers) output(made, results);
    const bool counted = !answers || made.capture->outputInto;
    state_.rowCount = count;
    if (firing) fireMerged(*plan, table, results);
    state_.rowCount = count;
    if (counted) addCount(results);
}

// The triggers of each kind of action see the rows of that kind, once all is written.
void StatementRunner::fireMerged(const MergePlan& plan, const Table& table,
                                 std::vector<ado::Result>& results) {
    for (const std::uint8_t event : {tsql::kOnInsert, tsql::kOnUpdate, tsql::kOnDelete}) {
        std::vector<std::string> columns;
        bool taken = false;
        for (const MergeStep& step : plan.steps) {
            if (step.event != event) continue;
            taken = true;
            columns.insert(columns.end(), step.columns.begin(), step.columns.end());
        }
        if (!taken || !fires(table, event)) continue;
        for (const std::string& sql : plan.refill) {
            PreparedStatement refill(connection_.handle(), sql);
            refill.bind(1, std::string_view(actionOf(event)));
            refill.run();
        }
        fire(table, {table.name, event, std::move(columns)}, results);
        captures_.empty(table);
    }
}

}  // namespace kap::engine
